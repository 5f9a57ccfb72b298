// Files that somebody sent: what is wrong in them is told with its place, before anything is done.
#include <filesystem>

#include "vtv_process.h"

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

struct Wrong {
    const char* name;
    const char* verb;
    std::string text;
    std::string told;
};

std::ostream& operator<<(std::ostream& out, const Wrong& wrong) {
    return out << wrong.name;
}

class WrongInAFile : public VtvTest, public testing::WithParamInterface<Wrong> {};

std::string Long(size_t size) {
    return "\"" + std::string(size, 'x') + "\"";
}

std::string Many(const std::string& begin, const std::string& between) {
    std::string text;
    for (int i = 0; i < 10001; ++i) {
        text += (i == 0 ? "" : between) + begin + std::to_string(i);
    }
    return text;
}

}  // namespace

TEST_P(WrongInAFile, IsToldWithItsLineAndChangesNothing) {
    Ok({"show"});
    const bool isModel = std::string(GetParam().verb) == "new";
    const std::string file =
        Path(isModel || GetParam().verb == std::string("run") ? "sent.toml" : "sent.json");
    Write(fs::path(file).filename(), "\n" + GetParam().text);
    const auto before = Contents("tvs/default/settings");
    const Output output = isModel ? Vtv({"new", "made", "--model", file})
                          : GetParam().verb == std::string("import") ? Vtv({"import", file, "made"})
                                                                     : Vtv({GetParam().verb, file});
    EXPECT_EQ(output.code, 2) << output.err;
    EXPECT_THAT(output.out + output.err, HasSubstr(file + ":2"));
    EXPECT_THAT(output.out + output.err, HasSubstr(GetParam().told));
    EXPECT_EQ(output.err.find(file + ":2"), output.err.rfind(file + ":2"));
    EXPECT_TRUE(Contents("tvs/default/settings") == before);
    EXPECT_FALSE(fs::exists(Path("tvs/made")));
}

INSTANTIATE_TEST_SUITE_P(
    , WrongInAFile,
    testing::Values(
        Wrong{"AFileBelowAFile", "load", R"({"files": ["a", "a/b"]})", "\"a/b\" cannot be there"},
        Wrong{"AFileAboveAFile", "import", R"({"files": ["a/b", "a"]})", "\"a/b\" cannot be there"},
        Wrong{"ALongFile", "load", "{\"files\": [" + Long(300) + "]}", "255 for each name"},
        Wrong{"ALongFileOfAModel", "new", "owner_files = [" + Long(300) + "]", "255 for each name"},
        Wrong{"AClashInAModel", "new", R"(owner_files = ["a", "a/b"])", "\"a/b\" cannot be there"},
        Wrong{"ANulInAFile", "load", R"({"files": ["a\u0000b"]})", "\"a\\u0000b\" is no file"},
        Wrong{"ANulInAMember", "load", R"({"a\u0000b": 1})", "\"a\\u0000b\" is unknown"},
        Wrong{"ALongValue", "load", "{\"settings\": {\"db/x\": " + Long(2000000) + "}}",
              "at most 1048576"},
        Wrong{"ALongValueOfAModel", "new", "settings.\"db/x\" = " + Long(2000000),
              "at most 1048576"},
        Wrong{"ALongKeyOfAModel", "new", "settings.\"db/" + std::string(300, 'x') + "\" = 1",
              "is too long"},
        Wrong{"ATitleThatIsANumber", "import", R"({"title": 5})", "must be a text"},
        Wrong{"AnUnknownMemberOfAPackage", "import", R"({"packages": [{"app": "a", "nmae": "b"}]})",
              "Did you mean \"name\"?"},
        Wrong{"NoNetwork", "load", R"({"network": null})", "\"network\" must be a text"},
        Wrong{"AFeatureWithoutAName", "load", R"({"features": {"": true}})", "must not be empty"},
        Wrong{"AnotherFormat", "load", R"({"format": "x"})", "is \"x\" but must be"},
        Wrong{"TooManyOtherFeatures", "new", "other-features = {" + Many("f", " = 1, ") + " = 1}",
              "10001 entries of \"other-features\""},
        Wrong{"TooManyOwnerFiles", "new", "owner_files = [" + Many("\"f", "\", ") + "\"]",
              "10001 entries of \"owner_files\""},
        Wrong{"TooManyInAStep", "run",
              "step = [{ set = {" + Many("\"db/x", "\" = 1, ") + "\" = 1} }]",
              "10001 entries of \"set\""},
        Wrong{"ACallThatTakesTooLong", "run",
              "step = [{ fault = { function = \"vconf_get_int\", slow = 2000000000 } }]",
              "from 1 to 5000"}),
    [](const testing::TestParamInfo<Wrong>& tested) { return std::string(tested.param.name); });

TEST_F(VtvTest, ACallThatTakesTooLongIsRefused) {
    const Output output = Vtv({"fault", "vconf_get_int", "--slow", "2000000000"});
    EXPECT_EQ(output.code, 2);
    EXPECT_THAT(output.err, HasSubstr("from 1 to 5000"));
    EXPECT_EQ(Vtv({"fault", "vconf_get_int", "--slow", "5000"}).code, 0);
}

TEST_F(VtvTest, AModelInATvHasNoMoreThanAModelMayHave) {
    Ok({"show"});
    Write("tvs/default/tv.toml", "#" + std::string(size_t{17} << 20U, 'x') + "\n");
    const Output output = Vtv({"show"});
    EXPECT_EQ(output.code, 2);
    EXPECT_THAT(output.err, HasSubstr("tv.toml: has more than 16 MiB"));
}

TEST_F(VtvTest, AnImportThatFailsLeavesNoFolderBehind) {
    Write("sent.json", "{}");
    // Its folders can be made, and no file in it: that has too long a path.
    std::string parents = Path("new");
    while (parents.size() < 3900) {
        parents += "/" + std::string(100, 'd');
    }
    parents += "/" + std::string(4070 - parents.size() - 1, 'd');
    EXPECT_EQ(Vtv({"import", Path("sent.json"), parents + "/tv"}).code, 4);
    EXPECT_FALSE(fs::exists(Path("new")));
    Ok({"import", Path("sent.json"), Path("new/deep/tv")});
}

TEST_F(VtvTest, AStandardOutputIsNoFileToRecordTo) {
    for (const char* file : {"-", "/dev/stdout"}) {
        const Output output = Vtv({"set", "db/x", "int", "1", "--record", file});
        EXPECT_EQ(output.code, 2) << output.err;
        EXPECT_THAT(output.err, HasSubstr(std::string(file) + ": "));
    }
    EXPECT_FALSE(fs::exists("-"));
    EXPECT_NE(Vtv({"get", "db/x"}).code, 0) << "nothing was done";
}
