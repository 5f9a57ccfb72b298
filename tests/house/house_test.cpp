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
    {"host", {"abi/", "program/", "virtual-tv/virtual_tv.h"}},
    {"explorer", {"abi/", "platform/", "program/", "host/core/"}},
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
            if (colon == 0 && depth == 1 && text.compare(end, 3, " : ") == 0) {
                colon = end;
            }
        }
        const std::string head = text.substr(at, end - at);
        if (colon != 0 && head.find(';') == std::string::npos) {
            ranges.push_back(text.substr(colon + 3, end - colon - 4));
        }
    }
    return ranges;
}

// A part of what a call returns. When that is a temporary, it is gone before the first round; the
// compilers do not tell.
bool IsPartOfACall(const std::string& range) {
    static const std::regex part(R"re(\)\s*(\[|\.(at|front|back)\())re");
    return std::regex_search(range, part);
}

}  // namespace

TEST(House, EveryRoomHasSources) {
    for (const std::string& room : ROOMS) {
        EXPECT_FALSE(SourcesOf(room).empty()) << room;
    }
}

TEST(House, NoLoopRunsOverAPartOfATemporary) {
    const std::string loop = "for";  // not as this source is to be read
    EXPECT_TRUE(IsPartOfACall(RangesOf(loop + " (auto& a : Parse(text)[\"b\"]) {").at(0)));
    EXPECT_FALSE(IsPartOfACall(RangesOf(loop + " (auto& a : names[Find(b)]) {").at(0)));
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

TEST(House, RandomTestsBeginWhereTheirSeedSays) {
    const std::string device = std::string("random_") + "device";
    int looked = 0;
    for (const char* room : {"tests", "bench", "fuzz"}) {
        for (const fs::path& source : SourcesOf(room)) {
            ++looked;
            const bool draws = Read(SOURCE / source).find(device) != std::string::npos;
            EXPECT_EQ(draws, source == "tests/environment.h")
                << source << ": the seed of a random test is Seed() of tests/environment.h";
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
