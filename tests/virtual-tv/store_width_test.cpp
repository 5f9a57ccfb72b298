// A 32-bit process, as the TV's are, and a 64-bit one share a store.
#include <gtest/gtest.h>
#include <stdio.h>

#include <climits>

#include "temporary_folder.h"
#include "virtual-tv/store.h"

namespace vtv {
namespace {

struct Tool {
    FILE* pipe;
    explicit Tool(const std::string& arguments)
        : pipe(popen((std::string(STORE_TOOL_32) + " " + arguments).c_str(), "r")) {}
    std::string Line() {
        char line[4096] = "";
        return fgets(line, sizeof line, pipe) != nullptr ? line : "";
    }
    ~Tool() { pclose(pipe); }
};

TEST(StoreWidthTest, WhatOneWidthWritesTheOtherReads) {
    TemporaryFolder folder;
    Store::Create(folder.Path());
    Store store(folder.Path(), Store::Durability::kDurable);
    const std::vector<std::pair<Value, std::string>> values = {{true, "bool true"},
                                                               {INT_MAX, "int 2147483647"},
                                                               {INT_MIN, "int -2147483648"},
                                                               {"語 text", "string 語 text"}};
    for (const auto& [value, text] : values) {
        store.Write("db/wide", value);
        EXPECT_EQ(Tool(folder.Path() + " get db/wide").Line(), text + "\n");
        {
            Tool tool(folder.Path() + " set db/narrow " + TypeName(value) + " '" + ToText(value) +
                      "'");
        }
        Value read;
        std::string problem;
        ASSERT_EQ(store.Read("db/narrow", &read, &problem), Store::Status::kOk) << problem;
        EXPECT_EQ(read, value);
    }
}

TEST(StoreWidthTest, ANarrowProcessIsToldOfEveryWriteOfAWideOne) {
    TemporaryFolder folder;
    Store::Create(folder.Path());
    Store store(folder.Path(), Store::Durability::kVolatile);
    Tool tool(folder.Path() + " count db/key 500");
    ASSERT_EQ(tool.Line(), "ready\n");
    for (int i = 0; i < 500; ++i) {
        store.Write("db/key", 7);
    }
    EXPECT_EQ(tool.Line(), "500\n");
}

}  // namespace
}  // namespace vtv
