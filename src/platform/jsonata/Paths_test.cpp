#include <gtest/gtest.h>

#include "platform/jsonata/EvaluateTesting.h"

namespace tn61131::jsonata {

namespace {

constexpr std::string_view kPlant = R"({
    "name": "north",
    "lines": [
        {"id": "L1", "rate": 3, "stations": [{"id": "S1", "value": 10, "tags": ["a", "b"]},
                                              {"id": "S2", "value": 5, "tags": []}]},
        {"id": "L2", "rate": 1, "stations": [{"id": "S3", "value": 7, "tags": ["c"]}]},
        {"id": "L3", "rate": 2, "stations": []}
    ],
    "matrix": [[1, 2], [3], [[4]]],
    "odd name": {"a.b": null},
    "empty": []
})";

TEST(JSONataPaths, NamesSelectAndSequencesFlatten) {
    constexpr ExpressionCase kCases[] = {
        {"name", "\"north\""},
        {"lines.id", R"(["L1","L2","L3"])"},
        {"lines.stations.value", "[10,5,7]"},
        {"lines.stations.tags", R"(["a","b","c"])"},
        {"lines.nothing", "undefined"},
        {"name.id", "undefined"},
        {"`odd name`.`a.b`", "null"},
        {"\"odd name\".\"a.b\"", "null"},
        {"empty", "[]"},
        {"empty.a", "undefined"},
        {"matrix", "[[1,2],[3],[[4]]]"},
        {"matrix.$", "[1,2,3,[4]]"},
        {"$.name", "\"north\""},
        {"lines.$$.name", R"(["north","north","north"])"},
        {"lines[1].stations.id", "\"S3\""},
        {"lines.(rate * 2)", "[6,2,4]"},
    };
    ExpectResults(kCases, kPlant);
}

TEST(JSONataPaths, PredicatesSelectByPositionOrTruth) {
    constexpr ExpressionCase kCases[] = {
        {"lines[0].id", "\"L1\""},
        {"lines[-1].id", "\"L3\""},
        {"lines[9].id", "undefined"},
        {"lines[1.9].id", "\"L2\""},
        {"lines[$count($$.lines) - 3].id", "\"L1\""},
        {"lines[[0, 2]].id", R"(["L1","L3"])"},
        {"lines[[-1, 0, 2]].id", R"(["L1","L3","L3"])"},
        {"lines[rate > 1].id", R"(["L1","L3"])"},
        {"lines[rate > 1][1].id", "\"L3\""},
        {"lines[stations].id", R"(["L1","L2"])"},
        {"lines.stations[0].id", R"(["S1","S3"])"},
        {"(lines.stations)[0].id", "\"S1\""},
        {"lines.stations[value > 6].id", R"(["S1","S3"])"},
        {"lines[true].id", R"(["L1","L2","L3"])"},
        {"lines[nothing].id", "undefined"},
        {"matrix[0]", "[1,2]"},
        {"matrix[0][1]", "2"},
        {"name[0]", "\"north\""},
        {"name[1]", "undefined"},
        {"matrix[-1][0]", "[4]"},
    };
    ExpectResults(kCases, kPlant);
}

TEST(JSONataPaths, ASingleValueStaysAnArrayWhereAsked) {
    constexpr ExpressionCase kCases[] = {
        {"lines[id = 'L1'].id", "\"L1\""},
        {"lines[id = 'L1'].id[]", "[\"L1\"]"},
        {"lines[id = 'L1'][].id", "[\"L1\"]"},
        {"lines[][id = 'L1'].id", "[\"L1\"]"},
        {"name[]", "[\"north\"]"},
        {"nothing[]", "undefined"},
        {"lines[1].stations.tags", "[\"c\"]"},
        {"lines[1].stations.[id]", "[\"S3\"]"},
        {"lines[1].stations.[id][]", "[[\"S3\"]]"},
        {"$map(lines[0], function($l) { $l.id })", "\"L1\""},
        {"$map(lines[0], function($l) { $l.id })[]", "[\"L1\"]"},
    };
    ExpectResults(kCases, kPlant);
}

TEST(JSONataPaths, WildcardsAndDescendants) {
    constexpr ExpressionCase kCases[] = {
        {"lines[0].*", R"(["L1",3,{"id":"S1","value":10,"tags":["a","b"]},{"id":"S2","value":5,"tags":[]}])"},
        {"lines.*[value = 7].id", "\"S3\""},
        {"*.id", R"(["L1","L2","L3"])"},
        {"**.value", "[10,5,7]"},
        {"**.id[0]", R"(["L1","S1","S2","L2","S3","L3"])"},
        {"(**.id)[0]", "\"L1\""},
        {"name.*", "undefined"},
        {"matrix.*", "[1,2,3,4]"},
        {"$count(lines[1].**)", "7"},
    };
    ExpectResults(kCases, kPlant);
}

TEST(JSONataPaths, Constructors) {
    constexpr ExpressionCase kCases[] = {
        {"[name, nothing, 1]", R"(["north",1])"},
        {"[matrix[0], 3]", "[1,2,3]"},
        {"[[matrix[0]], 3]", "[[1,2],3]"},
        {"lines.[id, rate]", R"([["L1",3],["L2",1],["L3",2]])"},
        {"lines.{id: rate}", R"([{"L1":3},{"L2":1},{"L3":2}])"},
        {"{'n': name, 'x': nothing}", R"({"n":"north"})"},
        {"lines{id: rate}", R"({"L1":3,"L2":1,"L3":2})"},
        {"lines.stations{$string(value > 6): $sum(value)}", R"({"true":17,"false":5})"},
        {"lines.stations{'all': id}", R"({"all":["S1","S2","S3"]})"},
        {"lines.stations{'all': $count($)}", R"({"all":3})"},
        {"nothing{'a': 1}", R"({"a":1})"},
        {"lines{rate: id}", "T1003"},
        {"{'a': 1, 'a': 2}", "D1009"},
        {"lines{'a': id, 'a': rate}", "D1009"},
        {"{'a': 1, 'b': {'c': [1..2]}}", R"({"a":1,"b":{"c":[1,2]}})"},
    };
    ExpectResults(kCases, kPlant);
}

TEST(JSONataPaths, SortingIsStable) {
    constexpr ExpressionCase kCases[] = {
        {"lines^(rate).id", R"(["L2","L3","L1"])"},
        {"lines^(>rate).id", R"(["L1","L3","L2"])"},
        {"lines^(<rate)[0].id", "\"L2\""},
        {"lines.stations^(>value).id", R"(["S1","S3","S2"])"},
        {"lines.stations^($count(tags), value).id", R"(["S2","S3","S1"])"},
        {"lines^(nothing).id", R"(["L1","L2","L3"])"},
        {"lines^(stations[1].value).id", R"(["L1","L2","L3"])"},
        {"lines^(>stations[1].value).id", R"(["L1","L2","L3"])"},
        {"[3, 1, 2]^($)", "[1,2,3]"},
        {"['b', 1]^($)", "T2007"},
        {"[true, false]^($)", "T2008"},
        {"[true]^($)", "true"},
    };
    ExpectResults(kCases, kPlant);
}

TEST(JSONataPaths, BindingOfPositionContextAndParent) {
    constexpr ExpressionCase kCases[] = {
        {"lines#$i.$i", "[0,1,2]"},
        {"lines.stations#$i.{id: $i}", R"([{"S1":0},{"S2":1},{"S3":0}])"},
        {"lines.stations[value > 6]#$i.{id: $i}", R"([{"S1":0},{"S3":1}])"},
        {"lines#$i[$i > 0].id", R"(["L2","L3"])"},
        {"lines^(rate)#$i.(id & $i)", R"(["L20","L31","L12"])"},
        {"lines@$l.name", R"(["north","north","north"])"},
        {"lines@$a.lines@$b[$a.rate > $b.rate].($a.id & $b.id)", R"(["L1L2","L1L3","L3L2"])"},
        {"lines@$l#$i{$l.id: $i}", R"({"L1":0,"L2":1,"L3":2})"},
        {"lines.stations.(%.id & id)", R"(["L1S1","L1S2","L2S3"])"},
        {"lines.stations.tags.(%.%.id & $)", R"(["L1a","L1b","L2c"])"},
        {"lines.stations[%.rate = 1].id", "\"S3\""},
        {"lines.stations.%.id", R"(["L1","L1","L2"])"},
        {"lines.stations.tags.%.%.%.name", R"(["north","north","north"])"},
        {"lines.stations^(%.rate, >value).id", R"(["S3","S1","S2"])"},
        {"lines.(stations).(%.id)", R"(["L1","L1","L2"])"},
    };
    ExpectResults(kCases, kPlant);
}

TEST(JSONataPaths, AnArrayIsOneInput) {
    constexpr ExpressionCase kCases[] = {
        {"$", "[[1,2],[3]]"},         {"$$", "[[1,2],[3]]"},        {"$[0]", "[1,2]"},
        {"$count($)", "2"},           {"$.$", "[1,2,3]"},           {"*", "[1,2,3]"},
        {"$[[0..1]]", "[[1,2],[3]]"}, {"$map($, $count)", "[2,1]"},
    };
    ExpectResults(kCases, "[[1, 2], [3]]");
    constexpr ExpressionCase kObjects[] = {
        {"a", "[1,2,3]"}, {"$.a", "[1,2,3]"}, {"$[1].a", "[2,3]"}, {"$[a = 1]", R"({"a":1})"}, {"a[0]", "1"}};
    ExpectResults(kObjects, R"([{"a": 1}, {"a": [2, 3]}])");
}

TEST(JSONataPaths, TransformChangesACopy) {
    constexpr ExpressionCase kCases[] = {
        {"lines[1] ~> |$|{'rate': rate + 1}, ['stations']|", R"({"id":"L2","rate":2})"},
        {"lines[1] ~> |stations|{'n': $count(tags)}, 'tags'|",
         R"({"id":"L2","rate":1,"stations":[{"id":"S3","value":7,"n":1}]})"},
        {"(lines[1] ~> |$|{'rate': 9}|; lines[1].rate)", "1"},
        {"($t := |lines|{}, 'stations'|; $t($).lines.id)", R"(["L1","L2","L3"])"},
        {"nothing ~> |a|{}|", "undefined"},
        {"$ ~> |lines|5|", "T2011"},
        {"$ ~> |lines|{}, 5|", "T2012"},
        {"'text' ~> |a|{}|", "T0410"},
    };
    ExpectResults(kCases, kPlant);
}

TEST(JSONataPaths, MembersOfLargeObjectsAreFound) {
    std::string document = "{";
    for (int i = 0; i < 500; ++i)
        document += "\"m" + std::to_string(i) + "\": " + std::to_string(i) + ", ";
    document += "\"m7\": \"last\"}";
    EXPECT_EQ(RunExpression("m3 + m499", document), "502");
    EXPECT_EQ(RunExpression("[1..3].$$.m7", document), R"(["last","last","last"])") << "the last of one name counts";
    EXPECT_EQ(RunExpression("[1..3].$$.none", document), "undefined");
    EXPECT_EQ(RunExpression("$merge([$, {'m2': 'new'}]).(m2 & m3 & m7)", document), "\"new3last\"");
}

}  // namespace

}  // namespace tn61131::jsonata
