// What holds for the house as a whole: who may include whom, and that the map names every source.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path SOURCE = SOURCE_DIR;

const std::vector<std::string> ROOMS = {"abi",        "platform", "si-ready", "program",
                                        "virtual-tv", "host",     "explorer"};

std::string Read(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

std::vector<fs::path> SourcesOf(const std::string& room) {
    std::vector<fs::path> sources;
    if (!fs::exists(SOURCE / room)) {
        return sources;
    }
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(SOURCE / room)) {
        const std::string extension = entry.path().extension();
        if (extension == ".h" || extension == ".cpp" || extension == ".c") {
            sources.push_back(fs::relative(entry.path(), SOURCE));
        }
    }
    return sources;
}

std::vector<std::string> IncludesOf(const fs::path& source) {
    static const std::regex include(R"re(^\s*#\s*include\s*"([^"]+)")re", std::regex::multiline);
    const std::string text = Read(SOURCE / source);
    std::vector<std::string> includes;
    for (auto match = std::sregex_iterator(text.begin(), text.end(), include);
         match != std::sregex_iterator(); ++match) {
        includes.push_back((*match)[1]);
    }
    return includes;
}

bool StartsWithOneOf(const std::string& text, const std::vector<std::string>& prefixes) {
    for (const std::string& prefix : prefixes) {
        if (text.rfind(prefix, 0) == 0) {
            return true;
        }
    }
    return false;
}

// The rooms that a file of a room may include, beside its own. A name without a room is its own.
const std::map<std::string, std::vector<std::string>> MAY_INCLUDE = {
    {"abi", {}},
    {"platform", {}},
    {"si-ready", {"abi/", "platform/"}},
    {"program", {}},
    {"virtual-tv", {"platform/", "program/"}},
    {"host",
     {"abi/", "program/", "virtual-tv/virtual_tv.h", "virtual-tv/recording_note.h",
      "virtual-tv/texts.h", "virtual-tv/whole_tvs.h", "virtual-tv/model/"}},
    {"explorer",
     {"abi/", "platform/", "program/", "host/page/", "host/core/toml_writer.h",
      "virtual-tv/model/"}},
};

// The explorer's rooms, from the bottom up.
const std::vector<std::string> EXPLORER_ROOMS = {
    "engine", "tv", "asking", "tables", "invariants", "sequences", "diff", "impact", "command"};

// Where a room of the explorer stands; the program itself stands above all.
std::size_t FloorOf(const fs::path& source) {
    const std::string room = source.parent_path().filename();
    const auto found = std::find(EXPLORER_ROOMS.begin(), EXPLORER_ROOMS.end(), room);
    return static_cast<std::size_t>(found - EXPLORER_ROOMS.begin());
}

// A source of the provider and those below it: an include never points up.
const std::map<std::string, std::set<std::string>> PROVIDER_BELOW = {
    {"SIMenuUtil", {}},
    {"MVAList", {"SIMenuUtil"}},
    {"general_voice_visiblechecker", {"SIMenuUtil", "MVAList"}},
    {"general_voice_enablechecker", {"SIMenuUtil", "MVAList"}},
    {"general_voice_dataprovider", {"SIMenuUtil", "MVAList"}},
};

// What the range-based loops of a source run over, as it is written.
std::vector<std::string> RangesOf(const std::string& text) {
    std::vector<std::string> ranges;
    for (std::size_t at = text.find("for ("); at != std::string::npos;
         at = text.find("for (", at + 1)) {
        std::size_t end = at + 5;
        std::size_t colon = 0;
        for (int depth = 1; depth > 0 && end < text.size(); ++end) {
            depth += text[end] == '(' ? 1 : text[end] == ')' ? -1 : 0;
            const bool isColon = text[end] == ':' && text[end - 1] != ':' && text[end + 1] != ':';
            if (colon == 0 && depth == 1 && isColon) {
                colon = end;
            }
        }
        const std::string head = text.substr(at, end - at);
        if (colon != 0 && head.find(';') == std::string::npos) {
            ranges.push_back(text.substr(colon + 1, end - colon - 2));
        }
    }
    return ranges;
}

// A part of what a call returns, or of what such a thing's own function does. When that is a
// temporary, it is gone before the first round; the compilers do not tell. A list in braces is made
// of copies.
bool IsPartOfACall(const std::string& range) {
    static const std::regex part(R"re(\)\s*(\[|\.(at|front|back)\(|\.\w+\(\)\s*(\.|\[|->)))re");
    const bool isList = range.find_first_not_of(" \n") == range.find('{');
    return !isList && std::regex_search(range, part);
}

}  // namespace

// The names of these stand in log records by which others filter, so what they hold cannot move.
const std::set<std::string> LONG_SOURCES = {"si-ready/src/SIMenuUtil.cpp",
                                            "si-ready/src/general_voice_dataprovider.cpp"};
constexpr int MOST_LINES = 400;
constexpr int MOST_LINES_OF_A_TEST = 700;
constexpr int MOST_LINES_OF_A_FUNCTION = 60;

std::vector<std::string> LinesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The functions that are too long, of a source as the formatter leaves it: a signature begins
// without indentation, and a brace without indentation ends the body. The rows of a table within
// are not counted.
std::vector<std::string> LongFunctions(const std::string& text) {
    static const std::regex signature(
        R"((?!namespace|extern|struct|class|enum|union|typedef)[A-Za-z_\[].*\(.*[^;])");
    static const std::regex table(R"((\s*).*= \{)");
    std::vector<std::string> found;
    std::string name;
    std::string tableEnd;
    bool inBody = false;
    int lines = 0;
    for (const std::string& line : LinesOf(text)) {
        std::smatch match;
        if (!tableEnd.empty()) {
            tableEnd = line == tableEnd ? "" : tableEnd;
        } else if (std::regex_match(line, match, table)) {
            tableEnd = match[1].str() + "};";
        } else if (name.empty() ? std::regex_match(line, signature) : !inBody) {
            name = name.empty() ? line : name;
            inBody = line.ends_with('{');
            name = line.ends_with(';') ? "" : name;
            lines = 0;
        } else if (inBody && line.starts_with('}')) {
            if (lines > MOST_LINES_OF_A_FUNCTION) {
                found.push_back(name + " " + std::to_string(lines));
            }
            inBody = false;
            name.clear();
        } else {
            ++lines;
        }
    }
    return found;
}

TEST(House, NoSourceIsTooLongToBeReadAtOnce) {
    std::vector<std::string> rooms = ROOMS;
    rooms.insert(rooms.end(), {"bench", "fuzz", "tests"});
    for (const std::string& room : rooms) {
        const int most = room == "tests" ? MOST_LINES_OF_A_TEST : MOST_LINES;
        for (const fs::path& source : SourcesOf(room)) {
            const auto lines = static_cast<int>(LinesOf(Read(SOURCE / source)).size());
            EXPECT_EQ(lines > most, LONG_SOURCES.count(source) == 1) << source << ": " << lines;
        }
    }
}

TEST(House, NoFunctionIsTooLongToBeReadAtOnce) {
    std::vector<std::string> rooms = ROOMS;
    rooms.insert(rooms.end(), {"bench", "fuzz", "tests"});
    for (const std::string& room : rooms) {
        for (const fs::path& source : SourcesOf(room)) {
            // A provider with every fault that can be had: one of its branches is compiled.
            if (source.parent_path() == "tests/host/fakes") {
                continue;
            }
            for (const std::string& function : LongFunctions(Read(SOURCE / source))) {
                ADD_FAILURE() << source << ": " << function;
            }
        }
    }
}

TEST(House, ALongFunctionIsNoticedAndATableInItIsNot) {
    std::string body;
    for (int i = 0; i <= MOST_LINES_OF_A_FUNCTION; ++i) {
        body += "    Do();\n";
    }
    EXPECT_EQ(LongFunctions("int F(int a,\n      int b) {\n" + body + "}\n").size(), 1U);
    EXPECT_EQ(LongFunctions("int F(int a,\n      int b);\nnamespace a {\n" + body + "}\n").size(),
              0U);
    EXPECT_EQ(LongFunctions("int F() {\n" + body + "}\n").size(), 1U);
    EXPECT_EQ(
        LongFunctions("int F() {\n    static const int t[] = {\n" + body + "    };\n}\n").size(),
        0U);
    EXPECT_EQ(LongFunctions("namespace a {\n" + body + "}\n").size(), 0U);
}

TEST(House, EveryRoomHasSources) {
    for (const std::string& room : ROOMS) {
        EXPECT_FALSE(SourcesOf(room).empty()) << room;
    }
}

TEST(House, NoLoopRunsOverAPartOfATemporary) {
    const std::string loop = "for";  // not as this source is to be read
    EXPECT_TRUE(IsPartOfACall(RangesOf(loop + " (auto& a : Parse(text)[\"b\"]) {").at(0)));
    EXPECT_TRUE(IsPartOfACall(RangesOf(loop + " (auto& a :\n    Parse(t)[\"b\"]) {").at(0)));
    EXPECT_TRUE(IsPartOfACall(RangesOf(loop + " (auto& a : Tv(b).GetModel().c) {").at(0)));
    EXPECT_FALSE(IsPartOfACall(RangesOf(loop + " (std::pair a : names[Find(b)]) {").at(0)));
    EXPECT_FALSE(IsPartOfACall(RangesOf(loop + " (auto& a : tv.GetModel().c) {").at(0)));
    std::vector<std::string> rooms = ROOMS;
    rooms.insert(rooms.end(), {"tests", "bench", "fuzz"});
    for (const std::string& room : rooms) {
        for (const fs::path& source : SourcesOf(room)) {
            for (const std::string& range : RangesOf(Read(SOURCE / source))) {
                EXPECT_FALSE(IsPartOfACall(range))
                    << source << ": for (... : " << range << "): name what the call returns first";
            }
        }
    }
}

namespace {

// What random numbers come from, each to the end of its statement.
std::vector<std::string> EnginesIn(const std::string& source) {
    static const std::regex engine(
        "std::(mt19937(_64)?|minstd_rand0?|default_random_engine|ranlux\\w+|knuth_b|"
        "\\w+_engine<[^>]*>)[^&\\w][^;]*;");
    return {std::sregex_token_iterator(source.begin(), source.end(), engine),
            std::sregex_token_iterator()};
}

}  // namespace

TEST(House, RandomTestsBeginWhereTheirSeedSays) {
    const std::string twister = std::string("std::") + "mt19937";  // not as this source is read
    EXPECT_EQ(EnginesIn(twister + " random(7); " + twister + "_64 other{Seed()};").size(), 2U);
    EXPECT_EQ(EnginesIn("void Draw(" + twister + "& random);").size(), 0U);
    const std::string device = std::string("random_") + "device";
    int looked = 0;
    for (const char* room : {"tests", "bench", "fuzz"}) {
        for (const fs::path& source : SourcesOf(room)) {
            ++looked;
            const bool draws = Read(SOURCE / source).find(device) != std::string::npos;
            EXPECT_EQ(draws, source == "tests/environment.h")
                << source << ": the seed of a random test is Seed() of tests/environment.h";
            for (const std::string& engine : EnginesIn(Read(SOURCE / source))) {
                EXPECT_NE(engine.find("Seed()"), std::string::npos)
                    << source << ": " << engine << ": it begins at Seed() of tests/environment.h";
            }
        }
    }
    EXPECT_GT(looked, 50);
}

TEST(House, ARoomIncludesOnlyTheRoomsBelowIt) {
    for (const std::string& room : ROOMS) {
        for (const fs::path& source : SourcesOf(room)) {
            for (const std::string& include : IncludesOf(source)) {
                const bool ofAnyRoom =
                    StartsWithOneOf(include, {"abi/", "platform/", "si-ready/", "program/",
                                              "virtual-tv/", "host/", "explorer/"});
                const bool own = include.rfind(room + "/", 0) == 0;
                EXPECT_TRUE(!ofAnyRoom || own || StartsWithOneOf(include, MAY_INCLUDE.at(room)))
                    << source << " includes \"" << include << '"';
                EXPECT_EQ(include.find(".."), std::string::npos)
                    << source << " includes \"" << include << "\": name the room instead";
            }
        }
    }
}

TEST(House, TheModelOfATvIncludesNothingOfOursButItself) {
    const std::vector<fs::path> sources = SourcesOf("virtual-tv/model");
    EXPECT_FALSE(sources.empty());
    for (const fs::path& source : sources) {
        for (const std::string& include : IncludesOf(source)) {
            EXPECT_TRUE(fs::path(include).filename() == include &&
                        fs::exists(SOURCE / "virtual-tv/model" / include))
                << source << " includes \"" << include << '"';
        }
    }
}

TEST(House, ThePageOfTheHostIncludesNoVirtualTvAndNoPlatform) {
    const std::vector<fs::path> sources = SourcesOf("host/page");
    EXPECT_FALSE(sources.empty());
    for (const fs::path& source : sources) {
        for (const std::string& include : IncludesOf(source)) {
            EXPECT_TRUE(fs::exists(SOURCE / "host/page" / include) ||
                        StartsWithOneOf(include, {"abi/", "program/", "virtual-tv/model/"}))
                << source << " includes \"" << include << '"';
        }
    }
}

// A front end is one of several; what they share knows none.
TEST(House, WhatAHostDoesIncludesNeitherCommandNorWindow) {
    for (const char* room : {"host/core", "host/page"}) {
        for (const fs::path& source : SourcesOf(room)) {
            for (const std::string& include : IncludesOf(source)) {
                EXPECT_FALSE(StartsWithOneOf(include, {"host/cli/", "host/window/"}))
                    << source << " includes \"" << include << '"';
            }
        }
    }
}

TEST(House, TheEngineOfTheExplorerKnowsNoTv) {
    for (const fs::path& source : SourcesOf("explorer/engine")) {
        for (const std::string& include : IncludesOf(source)) {
            EXPECT_FALSE(StartsWithOneOf(include, {"virtual-tv/", "platform/", "host/", "abi/"}))
                << source << " includes \"" << include << '"';
        }
    }
}

TEST(House, WhatTheExplorerIncludesLeadsToNoVirtualTv) {
    std::vector<fs::path> ways = SourcesOf("explorer");
    std::set<fs::path> seen(ways.begin(), ways.end());
    while (!ways.empty()) {
        const fs::path source = ways.back();
        ways.pop_back();
        for (const std::string& include : IncludesOf(source)) {
            const fs::path beside = source.parent_path() / include;
            const fs::path next = fs::exists(SOURCE / beside) ? beside : fs::path(include);
            EXPECT_NE(next, "virtual-tv/virtual_tv.h") << source;
            if (seen.insert(next).second) {
                ways.push_back(next);
            }
        }
    }
    EXPECT_EQ(seen.count("host/page/provider.h"), 1U);
}

TEST(House, NamesOnATvStandInTheModelOfATvAlone) {
    static const std::regex fact(
        R"re(^[^/\n]*"(db/\w|memory/\w|com\.vantelo/|com\.vantelo\.\w|org\.nemra\.[\w.-]+"|tnc"|pp"|)re"
        R"re(consent/|always_on_voice/|(no-)?feature/|VA(Order|Id|AppId|Name|FFSupport)\b).*$)re",
        std::regex::multiline);
    for (const char* line :
         {R"(Ask("tnc");)", R"("{\"VAId\":1}")", R"(Set("always_on_voice/" + id))",
          R"({"com.vantelo.tv.x", 1})", R"(f("org.nemra.wizard"))"}) {
        EXPECT_TRUE(std::regex_search(std::string(line), fact)) << line;
    }
    EXPECT_TRUE(std::regex_search(Read(SOURCE / "virtual-tv/model/keys.h"), fact));
    for (const char* room : {"virtual-tv", "host", "explorer"}) {
        for (const fs::path& source : SourcesOf(room)) {
            // What items depend on is generated, and a list of words.
            if (source.parent_path() == "virtual-tv/model" ||
                source.stem() == "page_dependencies") {
                continue;
            }
            const std::string text = Read(SOURCE / source);
            std::smatch found;
            EXPECT_FALSE(std::regex_search(text, found, fact))
                << source << ": " << found.str() << ": virtual-tv/model has it";
        }
    }
}

// A call that opens, makes, renames, removes or lists by a name, where a link can lead elsewhere.
bool NamesAFile(const std::string& text) {
    static const std::regex call(
        R"re(\b(open|creat|fopen|opendir|mkdir|mkfifo|rename|unlink|rmdir|truncate|symlink|link|)re"
        R"re((f?open|mkdir|rename|renameat2|unlink|symlink|link)at|mk[a-z]*temp)\()re"
        R"re(|\bfs::(\w*directory_iterator|remove|rename|copy|create_|resize_file)|\b[io]?fstream\b)re");
    return std::regex_search(text, call);
}

// The sources of the virtual TV that do so by themselves, and why they may: all others do it where
// the files of a TV's folder are opened.
const std::map<std::string, std::string> NAME_FILES = {
    {"tv_files", "they are that place"},
    {"copy", "copies an open folder into another, each entry by its name in them"},
    {"folder_names", "lists folders that hold TVs"},
    {"network", "reads the machine's routes"},
    {"own_files", "the user's own files"},
    {"paths", "makes the folders that TVs lie in"},
    {"recording_note", "one of the user's own files"},
    {"running_apps", "looks through the descriptors that its process has"},
    {"spawn", "opens /dev/null"},
    {"store", "names the files of keys in its open folder"},
    {"store_writer", "reads a key's file in that folder"},
    {"temporary_file", "names files of its own in that folder"},
    {"texts", "lists the catalogues that come with the virtual TV"},
    {"trusted_tv", "reads who is who on the machine"},
    {"watcher", "reads the machine's limits"},
    {"watches", "lists the owner's folders, none of them a link, to watch them"},
    {"whole_folder", "makes, moves and removes TVs, beside which it works"}};

TEST(House, FilesOfATvAreOpenedMadeAndRemovedInOnePlace) {
    EXPECT_TRUE(NamesAFile("unlink(x)"));
    EXPECT_TRUE(NamesAFile("    return openat(dir, x)"));
    EXPECT_TRUE(NamesAFile("fs::remove_all(x)"));
    EXPECT_FALSE(NamesAFile("reopen(x); dlopen(x); RemoveTvFile(x)"));
    std::set<std::string> seen;
    for (const fs::path& source : SourcesOf("virtual-tv")) {
        if (source.parent_path() != "virtual-tv" || !NamesAFile(Read(SOURCE / source))) {
            continue;
        }
        seen.insert(source.stem());
        EXPECT_EQ(NAME_FILES.count(source.stem()), 1U) << source << ": virtual-tv/tv_files.h does";
    }
    for (const auto& [name, reason] : NAME_FILES) {
        EXPECT_EQ(seen.count(name), 1U) << name << " needs no exception";
    }
}

TEST(House, InsideTheProviderAnIncludeNeverPointsUp) {
    for (const fs::path& source : SourcesOf("si-ready")) {
        const auto below = PROVIDER_BELOW.find(source.stem());
        for (const std::string& include : IncludesOf(source)) {
            const std::string included = fs::path(include).stem();
            if (PROVIDER_BELOW.count(included) == 0 || included == source.stem()) {
                continue;
            }
            EXPECT_TRUE(below != PROVIDER_BELOW.end() && below->second.count(included) == 1)
                << source << " includes \"" << include << '"';
        }
    }
}

TEST(House, TheExplorerHasItsListedRoomsAndNoSourceBesideThemButMain) {
    EXPECT_LE(EXPLORER_ROOMS.size(), 9U);
    std::set<std::string> rooms;
    for (const fs::path& source : SourcesOf("explorer")) {
        const fs::path folder = source.parent_path().lexically_relative("explorer");
        if (folder == ".") {
            EXPECT_EQ(source.filename(), "main.cpp");
        } else {
            rooms.insert(folder);
        }
    }
    EXPECT_EQ(rooms, std::set<std::string>(EXPLORER_ROOMS.begin(), EXPLORER_ROOMS.end()));
}

TEST(House, ATestOfTheExplorerIsNamedByItsRoomAndEachRoomHasOne) {
    std::set<std::string> rooms;
    for (const fs::path& source : SourcesOf("tests/explorer")) {
        const std::string name = source.stem();
        if (name.ends_with("_test")) {
            rooms.insert(name.substr(0, name.find('_')));
        }
    }
    EXPECT_EQ(rooms, std::set<std::string>(EXPLORER_ROOMS.begin(), EXPLORER_ROOMS.end()));
}

TEST(House, InsideTheExplorerAnIncludeNeverPointsUp) {
    std::size_t between = 0;
    for (const fs::path& source : SourcesOf("explorer")) {
        for (const std::string& include : IncludesOf(source)) {
            if (include.rfind("explorer/", 0) == 0) {
                ++between;
                EXPECT_LT(FloorOf(include), FloorOf(source))
                    << source << " includes \"" << include << '"';
            }
        }
    }
    EXPECT_GT(between, 50U);
}

TEST(House, HeadersIncludeEachOtherInNoCircle) {
    std::map<std::string, std::vector<std::string>> includes;
    for (const std::string& room : ROOMS) {
        for (const fs::path& source : SourcesOf(room)) {
            for (const std::string& include : IncludesOf(source)) {
                const fs::path beside = source.parent_path() / include;
                includes[source].push_back(fs::exists(SOURCE / beside) ? beside.string() : include);
            }
        }
    }
    // What includes nothing that is left, or is included by nothing that is left, stands in no
    // circle.
    for (bool found = true; found;) {
        std::set<std::string> included;
        for (const auto& [source, headers] : includes) {
            included.insert(headers.begin(), headers.end());
        }
        found = false;
        for (auto entry = includes.begin(); entry != includes.end();) {
            const bool isFree = included.count(entry->first) == 0 ||
                                std::none_of(entry->second.begin(), entry->second.end(),
                                             [&](const std::string& header) {
                                                 return includes.count(header) == 1;
                                             });
            found = found || isFree;
            entry = isFree ? includes.erase(entry) : std::next(entry);
        }
    }
    for (const auto& [source, headers] : includes) {
        ADD_FAILURE() << source << " stands in a circle of includes";
    }
}

TEST(House, ASourceIncludesItsOwnHeaderFirst) {
    for (const std::string& room : ROOMS) {
        for (const fs::path& source : SourcesOf(room)) {
            fs::path header = source;
            header.replace_extension(".h");
            if (source.extension() != ".cpp" || !fs::exists(SOURCE / header)) {
                continue;
            }
            const std::vector<std::string> includes = IncludesOf(source);
            ASSERT_FALSE(includes.empty()) << source;
            EXPECT_EQ(fs::path(includes.front()).filename(), header.filename()) << source;
        }
    }
}

TEST(House, TheManPagesTellOfEachVariableThatAProgramReads) {
    const std::string told = Read(SOURCE / "program/surroundings.cpp");
    const std::regex read("(?:getenv|Environment|absolute)\\(\"([A-Z_]+)\"\\)");
    int found = 0;
    for (const char* room : {"program", "virtual-tv", "host", "explorer"}) {
        for (const fs::path& file : SourcesOf(room)) {
            const std::string text = Read(SOURCE / file);
            for (std::sregex_iterator match(text.begin(), text.end(), read), end; match != end;
                 ++match, ++found) {
                EXPECT_NE(told.find((*match)[1]), std::string::npos) << file << ": " << (*match)[1];
            }
        }
    }
    EXPECT_GT(found, 10);
}

TEST(House, TheMapNamesEverySource) {
    const std::string map = Read(SOURCE / "docs/architecture.md");
    for (const std::string& room : ROOMS) {
        for (const fs::path& source : SourcesOf(room)) {
            fs::path stem = source;
            stem.replace_extension();
            EXPECT_TRUE(map.find("`" + stem.string() + "`") != std::string::npos ||
                        map.find("`" + source.string() + "`") != std::string::npos)
                << "docs/architecture.md has no line for `" << stem.string() << "`";
        }
    }
}

TEST(House, TheMapNamesNoSourceThatIsGone) {
    static const std::regex name(R"re(^- `([^`]+)`)re", std::regex::multiline);
    const std::string map = Read(SOURCE / "docs/architecture.md");
    int named = 0;
    for (auto match = std::sregex_iterator(map.begin(), map.end(), name);
         match != std::sregex_iterator(); ++match) {
        const std::string path = (*match)[1];
        ++named;
        EXPECT_TRUE(fs::exists(SOURCE / path) || fs::exists(SOURCE / (path + ".h")) ||
                    fs::exists(SOURCE / (path + ".cpp")) || fs::exists(SOURCE / (path + ".c")))
            << "docs/architecture.md names `" << path << '`';
    }
    EXPECT_GT(named, 10);
}
