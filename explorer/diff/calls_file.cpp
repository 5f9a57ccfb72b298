#include "calls_file.h"

#include <json/json.h>
#include <toml++/toml.h>

#include <algorithm>
#include <cstdio>
#include <deque>

#include "explorer/asking/recorder.h"
#include "explorer/engine/bytes.h"
#include "host/core/toml_writer.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/text_file.h"
#include "virtual-tv/model/toml_reader.h"
#include "walk_comparison.h"

namespace explorer {

namespace {

constexpr struct {
    Call::Kind kind;
    const char* word;
} WORDS[] = {
    {Call::Kind::kCreate, "create"},
    {Call::Kind::kPublish, "publish"},
    {Call::Kind::kDelete, "delete"},
    {Call::Kind::kCreateNothing, "create-nothing"},
    {Call::Kind::kInitialize, "initialize-and-finalize"},
    {Call::Kind::kDeleteNothing, "delete-nothing"},
    {Call::Kind::kSecond, "create-and-delete-second"},
    {Call::Kind::kSecondStays, "create-second-delete-first"},
    {Call::Kind::kAsk, "ask"},
};

// ---------------------------------------------------------------------------------------------
// Writing
// ---------------------------------------------------------------------------------------------

// What the TV answers, by the inputs' names: the values' words, or their numbers where two values
// are called alike.
toml::array TvOf(const Inputs& inputs, const std::vector<Decision>& path) {
    toml::array tv;
    for (const Decision& decision : path) {
        const Input& input = inputs.inputs[decision.input];
        const std::string& words = input.values[decision.value].words;
        const bool isOne =
            std::count_if(input.values.begin(), input.values.end(),
                          [&](const Value& value) { return value.words == words; }) == 1;
        tv.push_back(isOne ? toml::array{input.name, words}
                           : toml::array{input.name, decision.value});
    }
    return tv;
}

toml::table CallTable(const Inputs& inputs, const Calls& calls, int number,
                      const std::vector<Decision>& path) {
    const Call& call = calls[number];
    const auto known = std::find_if(std::begin(WORDS), std::end(WORDS),
                                    [&](const auto& word) { return word.kind == call.kind; });
    toml::table table{{"do", known->word}};
    if (const std::string* document = calls.Document(call.document)) {
        table.insert("policy", *document);
    }
    if (call.question != nullptr) {
        table.insert("question", call.question->name);
    }
    host::InsertAny(table, "tv", TvOf(inputs, path));
    return table;
}

}  // namespace

std::string ToCallsFile(const Inputs& inputs, const DiffOptions& options, const Calls& calls,
                        const Walk& walk, const Difference& difference) {
    std::string text =
        "# Two providers differ in the last of these calls. vtv-explore replay FILE "
        "--provider X\n# ends with 0 when X does what the first of them does, and "
        "else with 1.\n# Only the second:\n";
    for (const std::string& line : difference.onlyB) {
        text += host::TomlComment("  " + line);
    }
    text += host::ToToml(toml::table{{"logs", options.records.logs},
                                     {"lines", options.records.lines},
                                     {"reads", options.records.reads}});
    for (const int joint : walk.WayTo(difference.joint)) {
        text +=
            StepText(CallTable(inputs, calls, walk.At(joint).call, walk.At(joint).path), "call");
    }
    toml::table last = CallTable(inputs, calls, difference.call, difference.smallest.path);
    last.insert("expect", host::TomlList(TextsOf(ReadRecord(difference.recordA))));
    return text + StepText(last, "call");
}

// ---------------------------------------------------------------------------------------------
// Reading
// ---------------------------------------------------------------------------------------------

namespace {

using Texts = std::vector<std::string>;

struct PlayedCall {
    Call call;  // its document is a place in Played::documents
    std::vector<std::pair<int, const Value*>> tv;
    std::optional<Texts> expected;
};

struct Played {
    RecordOptions records;
    Texts documents;
    std::vector<PlayedCall> calls;
};

class CallsReader : private vtv::TomlReader {
  public:
    CallsReader(const std::string& file, const Inputs& inputs)
        : TomlReader(file), inputs_(inputs) {}

    Played Read() {
        const toml::table root = ReadFile();
        CheckKeys(root, "in a file of calls", {"logs", "lines", "reads", "call"});
        Played played;
        played.records = {Bool(root, "logs", true), Bool(root, "lines", false),
                          Bool(root, "reads", true)};
        for (const toml::table* table : Tables(root, "call")) {
            played.calls.push_back(ReadCall(*table, played));
        }
        if (played.calls.empty() || !played.calls.back().expected) {
            Fail(root, "needs [[call]]s, the last of them with expect = [...]");
        }
        return played;
    }

  private:
    PlayedCall ReadCall(const toml::table& table, Played& played) const {
        CheckKeys(table, "in a call", {"do", "policy", "question", "tv", "expect"});
        PlayedCall one;
        const std::string word = RequiredString(table, "do", "a call");
        const auto known = std::find_if(std::begin(WORDS), std::end(WORDS),
                                        [&](const auto& each) { return word == each.word; });
        if (known == std::end(WORDS)) {
            std::string words;
            for (const auto& each : WORDS) {
                words += (words.empty() ? " " : ", ") + std::string(each.word);
            }
            Fail(table, "do = \"" + word + "\": write one of" + words);
        }
        one.call.kind = known->kind;
        if (table.contains("policy")) {
            one.call.document = static_cast<int>(played.documents.size());
            played.documents.push_back(String(table, "policy", ""));
        } else if (one.call.kind == Call::Kind::kPublish) {
            Fail(table, "publish needs policy = \"...\"");
        }
        if (one.call.kind == Call::Kind::kAsk) {
            const std::string name = RequiredString(table, "question", "a call that asks");
            one.call.question = FindQuestion(name);
            if (one.call.question == nullptr) {
                Fail(table, "there is no question \"" + name + "\"");
            }
        }
        ReadTv(table, one);
        if (table.contains("expect")) {
            one.expected = Strings(table, "expect");
        }
        return one;
    }

    void ReadTv(const toml::table& table, PlayedCall& one) const {
        const toml::array* pairs = List(table, "tv");
        for (std::size_t i = 0; pairs != nullptr && i < pairs->size(); ++i) {
            const toml::array* pair = pairs->get(i)->as_array();
            if (pair == nullptr || pair->size() != 2) {
                Fail(*pairs->get(i), "tv is a list of [input, value]");
            }
            const std::string name = pair->get(0)->value_or(std::string());
            const auto input = std::find_if(inputs_.inputs.begin(), inputs_.inputs.end(),
                                            [&](const Input& each) { return each.name == name; });
            if (input == inputs_.inputs.end()) {
                Fail(*pair->get(0), "no input is called \"" + name + "\"");
            }
            one.tv.emplace_back(inputs_.IndexOf(*input), &ValueOf(*input, *pair->get(1)));
        }
    }

    const Value& ValueOf(const Input& input, const toml::node& node) const {
        const std::string words = node.value_or(std::string());
        for (std::size_t i = 0; i < input.values.size(); ++i) {
            const bool isIt = node.is_integer() ? node.value_or(-1) == static_cast<int>(i)
                                                : input.values[i].words == words;
            if (isIt) {
                return input.values[i];
            }
        }
        Fail(node, "\"" + input.name + "\" has no such value");
    }

    const Inputs& inputs_;
};

// ---------------------------------------------------------------------------------------------
// Playing
// ---------------------------------------------------------------------------------------------

class Player {
  public:
    Player(const Inputs& inputs, const std::string& file, const Played& played)
        : inputs_(inputs), played_(played), provider_(file, 0), recorder_(provider_) {
        tv().Use(inputs);
        UseRecords(played.records);
    }

    // By call: what was done.
    std::vector<Texts> Play(Shared& shared) {
        std::vector<Texts> done;
        std::deque<ProviderState> states = {provider_.Start()};
        for (const PlayedCall& one : played_.calls) {
            shared.step = static_cast<int>(done.size());
            for (int input = 0; input < static_cast<int>(inputs_.inputs.size()); ++input) {
                tv().Preset(input, nullptr);
            }
            for (const auto& [input, value] : one.tv) {
                tv().Preset(input, value);
            }
            shared.choices.Clear();
            tv().Begin(shared.choices);
            const std::function<void()> call = [&] { Do(one.call); };
            recorder_.Make(states.back(), call);
            recorder_.TryAgain();
            done.push_back(TextsOf(ReadRecord(recorder_.Record())));
            if (recorder_.Next()) {
                states.push_back(std::move(*recorder_.Next()));
            }
            ++shared.runs;
        }
        return done;
    }

  private:
    void Do(const Call& call) {
        if (call.document >= 0 || call.kind == Call::Kind::kCreate) {
            published_ = call.document >= 0
                             ? &played_.documents[static_cast<std::size_t>(call.document)]
                             : nullptr;
        }
        tv().SetPolicy(published_);
        provider_.Do(call);
    }

    const Inputs& inputs_;
    const Played& played_;
    LivingProvider provider_;
    Recorder recorder_;
    const std::string* published_ = nullptr;
};

int ShowUnlike(std::size_t number, const Texts& expected, const Texts& done) {
    const auto print = [](const Texts& lines, const Texts& others, const char* sign) {
        for (const std::string& line : lines) {
            if (std::count(lines.begin(), lines.end(), line) !=
                std::count(others.begin(), others.end(), line)) {
                std::printf("  %s %s\n", sign, program::OneLine(line).c_str());
            }
        }
    };
    std::printf("Call %zu does not do what the file expects.\n", number);
    print(expected, done, "-");
    print(done, expected, "+");
    return kExitNo;
}

}  // namespace

int ReplayMain(const ReplayOptions& options) {
    const Inputs inputs = LoadInputs(InputsFile());
    const Played played = CallsReader(options.file, inputs).Read();
    CheckSubject(options.provider);
    RequireArena();
    std::vector<Texts> done;
    std::string trouble;
    Work(
        1, {.workers = 1, .progress = false},
        [&](int, Shared& shared) {
            return ToBytes(Player(inputs, options.provider, played).Play(shared));
        },
        [&](const WorkerResult& result) {
            trouble = result.trouble;
            if (trouble.empty()) {
                done = BytesReader(result.bytes).Next<std::vector<Texts>>();
            } else {
                std::printf("The provider %s in call %d.\n", trouble.c_str(), result.step + 1);
            }
            return false;
        });
    if (!trouble.empty()) {
        return kExitNo;
    }
    for (std::size_t i = 0; i < done.size(); ++i) {
        const std::optional<Texts>& expected = played.calls[i].expected;
        if (expected && *expected != done[i]) {
            return ShowUnlike(i + 1, *expected, done[i]);
        }
    }
    std::printf("%zu calls, as expected.\n", done.size());
    return IsInterrupted() ? kExitTrouble : kExitOk;
}

}  // namespace explorer
