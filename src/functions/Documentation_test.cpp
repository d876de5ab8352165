#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "functions/FunctionTable.h"
#include "platform/FormatText.h"
#include "platform/Time.h"
#include "support/BlockCall.h"
#include "support/FunctionCall.h"
#include "support/TestMachine.h"

// docs/functions.md against the tables and the functions themselves: every row stands there as the table has it, and
// every example gives what it says.

namespace {

using function_test::BlockInstance;
using function_test::Declare;
using function_test::FindByName;
using function_test::FunctionCaller;
using function_test::ParseLiteral;
using function_test::SplitList;
using function_test::TestMachine;
using function_test::TrimBlanks;

/// The page's lines; none, and a failure, when the tests do not run in the project's folder.
std::vector<std::string> ReadPage() {
    std::ifstream file("docs/functions.md");
    EXPECT_TRUE(file.is_open()) << "run from the project's folder";
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

/// The cells of a table row.
std::vector<std::string> SplitCells(std::string_view line) {
    std::vector<std::string> cells;
    for (std::size_t at = 1; at < line.size();) {
        const std::size_t end = line.find('|', at);
        cells.emplace_back(TrimBlanks(line.substr(at, end - at)));
        at = end + 1;
    }
    return cells;
}

/// The rows of the table under a heading, without its head.
std::vector<std::vector<std::string>> TableUnder(const std::vector<std::string>& page, const std::string& heading) {
    std::vector<std::vector<std::string>> rows;
    bool inside = false;
    for (const std::string& line : page) {
        if (StartsWith(line, "## ")) inside = line == heading;
        if (inside && StartsWith(line, "|")) rows.push_back(SplitCells(line));
    }
    EXPECT_GT(rows.size(), 2U) << heading;
    if (rows.size() > 2) rows.erase(rows.begin(), rows.begin() + 2);
    return rows;
}

/// The code spans of a cell.
std::vector<std::string> CodeSpans(std::string_view cell) {
    std::vector<std::string> spans;
    for (std::size_t open = cell.find('`'); open != std::string_view::npos;) {
        const std::size_t close = cell.find('`', open + 1);
        spans.emplace_back(cell.substr(open + 1, close - open - 1));
        open = cell.find('`', close + 1);
    }
    return spans;
}

/// Behind the parenthesis that ends a call; texts in quotes may hold others.
std::size_t EndOfCall(std::string_view example) {
    char quote = 0;
    for (std::size_t at = 0; at < example.size(); ++at) {
        const char c = example[at];
        if (c == '$') {
            ++at;
        } else if (quote != 0) {
            if (c == quote) quote = 0;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == ')') {
            return at + 1;
        }
    }
    return std::string_view::npos;
}

/// Examples of functions, run at the time and in the zone that the page states.
class ExampleRunner {
 public:
    ExampleRunner() {
        machine_.SetTime(ParseLiteral("DT#2024-01-31-12:00:00").GetPayload<long long>());
        caller_.GetSettings().SetTimeZone(CTNTimeZone("Europe/Vienna"));
    }

    /// "LEFT('ABC', 2) = 'AB'", "DIV(1, 0) = error 226", "F() is WORD", "F(1, OUT => 2)".
    void Run(const std::string& example) {
        SCOPED_TRACE(example);
        const std::size_t end = EndOfCall(example);
        ASSERT_NE(end, std::string::npos);
        Call(example.substr(0, end));
        const std::string_view claim = std::string_view(example).substr(end);
        if (StartsWith(claim, " = error ")) {
            ASSERT_EQ(caller_.GetLog().GetEntries().size(), 1U);
            EXPECT_EQ(std::to_string(caller_.GetLog().GetEntries()[0].id), claim.substr(9));
        } else if (StartsWith(claim, " = ")) {
            EXPECT_EQ(caller_.Describe(), Declare(ParseLiteral(std::string(claim.substr(3)))));
        } else if (StartsWith(claim, " is ")) {
            EXPECT_EQ(caller_.GetResult().GetTypeName(false), claim.substr(4));
        } else {
            EXPECT_EQ(claim, "");
            EXPECT_EQ(caller_.GetStatus(), CallStatus::Continue);
            EXPECT_GT(outputs_.size(), 0U) << "an example without a claim";
            CheckOutputs();
        }
    }

 private:
    void Call(const std::string& call) {
        const std::size_t open = call.find('(');
        std::vector<CValue> arguments;
        outputs_.clear();
        for (const std::string& part : SplitList(std::string_view(call).substr(open + 1, call.size() - open - 2))) {
            const std::size_t arrow = part.find(" => ");
            if (arrow == std::string::npos) {
                arguments.push_back(ParseLiteral(part));
                continue;
            }
            arguments.emplace_back();
            arguments.push_back(TestMachine::PointerTo(static_cast<unsigned int>(2 * outputs_.size())));
            outputs_.push_back("INT#" + part.substr(arrow + 4));
        }
        caller_.Call(FindByName(call.substr(0, open)), std::move(arguments));
    }

    void CheckOutputs() const {
        for (std::size_t i = 0; i < outputs_.size(); ++i) {
            EXPECT_EQ(Declare(machine_.Read(static_cast<unsigned int>(2 * i), ElementaryType::Int)), outputs_[i]);
        }
    }

    TestMachine machine_;
    FunctionCaller caller_{&machine_.GetExec()};
    std::vector<std::string> outputs_;
};

std::string Heading(const FunctionGroup& group) {
    return FormatText("## Group %d: %s", group.number, group.word);
}

TEST(FunctionPage, RowsAreThoseOfTheTables) {
    const std::vector<std::string> page = ReadPage();
    for (const FunctionGroup& group : GetFunctionGroups()) {
        SCOPED_TRACE(group.word);
        const auto rows = TableUnder(page, Heading(group));
        ASSERT_EQ(rows.size(), group.rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const FunctionRow& row = group.rows[i];
            ASSERT_EQ(rows[i].size(), 5U) << row.name;
            EXPECT_EQ(rows[i][0], std::to_string(row.id));
            EXPECT_EQ(rows[i][1], std::string(row.name) + '(' + row.parameters + ')');
            EXPECT_EQ(rows[i][2], row.result);
        }
    }
}

TEST(FunctionPage, EveryFunctionHasExamplesAndTheyHold) {
    const std::vector<std::string> page = ReadPage();
    for (const FunctionGroup& group : GetFunctionGroups()) {
        for (const std::vector<std::string>& row : TableUnder(page, Heading(group))) {
            SCOPED_TRACE(row[1]);
            const std::vector<std::string> examples = CodeSpans(row.at(4));
            EXPECT_FALSE(examples.empty());
            for (const std::string& example : examples) {
                EXPECT_TRUE(StartsWith(example, row[1].substr(0, row[1].find('(') + 1))) << example;
                ExampleRunner().Run(example);
            }
        }
    }
}

std::string JoinFields(const BlockRow& row, BlockFieldRole role) {
    std::string text;
    for (const BlockField& field : row.fields) {
        if (field.role == role) text += (text.empty() ? "" : ", ") + std::string(field.name);
    }
    return text;
}

TEST(FunctionBlockPage, RowsAreThoseOfTheTable) {
    const auto rows = TableUnder(ReadPage(), "## Function blocks");
    const std::span<const BlockRow> blocks = GetBlockGroups()[0].rows;
    ASSERT_EQ(rows.size(), blocks.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const BlockRow& block = blocks[i];
        SCOPED_TRACE(block.name);
        std::string layout;
        for (const BlockField& field : block.fields) {
            layout += layout.empty() ? "" : ", ";
            layout += FormatText("%s %s %d", field.name, CValueType(field.type).GetTypeName(false), field.offset);
        }
        const std::vector<std::string> expected = {std::to_string(block.id),
                                                   block.name,
                                                   std::to_string(block.dataSize),
                                                   JoinFields(block, BlockFieldRole::Input),
                                                   JoinFields(block, BlockFieldRole::Output),
                                                   layout};
        EXPECT_EQ(rows[i], expected);
    }
}

/// "IN := TRUE, PT := T#1s" to "TRUE, T#1s", with the names checked against the fields of a role.
std::string StripNames(std::string_view text, std::string_view assign, const BlockRow& row, BlockFieldRole role) {
    std::string values;
    std::string names;
    for (const std::string& part : SplitList(text)) {
        const std::size_t at = part.find(assign);
        EXPECT_NE(at, std::string::npos) << part;
        names += (names.empty() ? "" : ", ") + part.substr(0, at);
        values += (values.empty() ? "" : ", ") + part.substr(at + assign.size());
    }
    EXPECT_EQ(names, JoinFields(row, role));
    return values;
}

/// One line of a timeline: "TON(IN := TRUE, PT := T#100ms) at 60: Q = FALSE, ET = T#60ms".
void RunScan(BlockInstance& instance, const std::string& line) {
    SCOPED_TRACE(line);
    const std::string name = instance.GetRow().name;
    ASSERT_TRUE(StartsWith(line, name + '('));
    const std::size_t close = line.find(") at ");
    const std::size_t colon = line.find(": ", close);
    ASSERT_NE(colon, std::string::npos);
    const std::string_view text = line;
    const std::string inputs = StripNames(text.substr(name.size() + 1, close - name.size() - 1),
                                          " := ", instance.GetRow(), BlockFieldRole::Input);
    const std::string outputs = StripNames(text.substr(colon + 2), " = ", instance.GetRow(), BlockFieldRole::Output);
    EXPECT_EQ(instance.Call(std::stoll(line.substr(close + 5)), inputs), outputs);
}

TEST(FunctionBlockPage, EveryBlockHasATimelineAndItHolds) {
    const std::vector<std::string> page = ReadPage();
    for (const BlockRow& block : GetBlockGroups()[0].rows) {
        SCOPED_TRACE(block.name);
        BlockInstance instance(block.name);
        bool inSection = false;
        bool inFence = false;
        int scans = 0;
        for (const std::string& line : page) {
            if (StartsWith(line, "##")) inSection = StartsWith(line, std::string("### ") + block.name + ':');
            if (inSection && line == "```") {
                inFence = !inFence;
            } else if (inSection && inFence) {
                RunScan(instance, line);
                ++scans;
            }
        }
        EXPECT_GT(scans, 1);
    }
}

}  // namespace
