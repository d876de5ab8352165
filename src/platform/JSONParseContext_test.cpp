#include <gtest/gtest.h>

#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"

namespace {

TEST(JSONParseContext, PositionStaysInsideTheText) {
    COutputLogNull log;
    JSONParseContext context("abc", log);
    EXPECT_EQ(context.GetPosition(), 0U);
    context.SetPosition(2);
    EXPECT_EQ(context.GetPosition(), 2U);
    context.SetPosition(3);
    EXPECT_EQ(context.GetPosition(), 3U);
    context.SetPosition(4);
    EXPECT_EQ(context.GetPosition(), 3U);
}

}  // namespace
