#include "page.h"

#include <algorithm>

using namespace recording;

std::string Stored(const std::string& name) {
    const auto found = tv().settings.find(name);
    if (found == tv().settings.end() || !std::holds_alternative<std::string>(found->second)) {
        return "(none)";
    }
    return std::get<std::string>(found->second);
}

std::string Assistant(int order, const std::string& id, const std::string& appId,
                      const std::string& name, bool farField) {
    return "{\"VAOrder\":" + std::to_string(order) + ",\"VAId\":\"" + id + "\",\"VAAppId\":\"" +
           appId + "\",\"VAName\":\"" + name +
           "\",\"VAFFSupport\":" + (farField ? "true" : "false") + "}";
}

std::string Policy(const std::vector<std::string>& assistants) {
    std::string policy = "[";
    for (const std::string& assistant : assistants) {
        policy += (policy.size() > 1 ? "," : "") + assistant;
    }
    return policy + "]";
}

std::string WholePolicy() {
    return Policy({Assistant(1, "ORVIK2", "app.orvik", "Orvik", true),
                   Assistant(2, "ALEXA", "app.alexa", "Alexa"),
                   Assistant(3, "GVA", "app.google", "Google Assistant", true),
                   Assistant(4, "SBER", "app.salute", "Salute"),
                   Assistant(5, "SVA", "app.sva", "Sva"),
                   Assistant(6, "TENCENT", "app.tencent", "Xiaowei")});
}

std::string E(const char* file, const std::string& function, const std::string& message) {
    return std::string("log E ") + file + ' ' + function + " * " + message;
}

std::string E(const char* file, const std::string& function, int line, const std::string& message) {
    return std::string("log E ") + file + ' ' + function + ' ' + std::to_string(line) + ' ' +
           message;
}

std::string Handler(const std::string& function, const std::string& message) {
    return E(source::PROVIDER, function, message);
}

std::string I(const char* file, const std::string& function, int line, const std::string& message) {
    return std::string("log I ") + file + ' ' + function + ' ' + std::to_string(line) + ' ' +
           message;
}

namespace {

// Equal, but that a lone "*" of the expectation stands for a number.
bool Matches(const std::string& expected, const std::string& actual) {
    const std::size_t star = expected.find(" * ");
    if (star == std::string::npos || !expected.starts_with("log ")) {
        return expected == actual;
    }
    if (actual.compare(0, star + 1, expected, 0, star + 1) != 0) {
        return false;
    }
    std::size_t i = star + 1;
    while (i < actual.size() && actual[i] >= '0' && actual[i] <= '9') {
        ++i;
    }
    return i > star + 1 && actual.substr(i) == expected.substr(star + 2);
}

testing::AssertionResult Compare(const Lines& expected, const Lines& actual) {
    const auto [e, a] =
        std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end(), Matches);
    if (e == expected.end() && a == actual.end()) {
        return testing::AssertionSuccess();
    }
    testing::AssertionResult failure = testing::AssertionFailure();
    failure << "they part at line " << e - expected.begin() << "\nexpected:\n";
    for (const std::string& line : expected) {
        failure << "    " << line << '\n';
    }
    failure << "was:\n";
    for (const std::string& line : actual) {
        failure << "    " << line << '\n';
    }
    return failure;
}

}  // namespace

testing::AssertionResult CallsAre(const Lines& expected) {
    return Compare(expected, Calls());
}

testing::AssertionResult LogIs(const Lines& expected) {
    return Compare(expected, CallsOf("log "));
}

testing::AssertionResult Logged(const std::string& expected) {
    for (const std::string& line : CallsOf("log ")) {
        if (Matches(expected, line)) {
            return testing::AssertionSuccess();
        }
    }
    testing::AssertionResult failure = testing::AssertionFailure();
    failure << "no record is " << expected << "\nbut:\n";
    for (const std::string& line : CallsOf("log ")) {
        failure << "    " << line << '\n';
    }
    return failure;
}

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Lines Walk(int records) {
    return Lines(static_cast<std::size_t>(records), Current());
}

Lines Member(const std::string& name, const std::string& member, const std::string& value) {
    return {GetStr(name), E(source::UTIL, "getValueOfJsonVconf", 325,
                            "json parse vconf " + name + " - key " + member + ", value " + value)};
}

Lines AskTerms() {
    return {"GetDisclaimerItemAgreement tnc", "GetDisclaimerItemAgreement pp"};
}

void Provider::SetUp() {
    Reset();
    // The list and what is known of applications outlive a provider.
    tv().settings[setting::POLICY] = R"([{"VAId":"nobody"}])";
    void** table = nullptr;
    ASSERT_EQ(create_provider(&table), 0);
    page = reinterpret_cast<SIProviderTable*>(table);
    Publish(setting::POLICY, "[]");
    CSIMenuUtil::m_listTTSLanguage.clear();
    ClearCalls();
}

void Provider::TearDown() {
    ClearFaults();
    void** table = reinterpret_cast<void**>(page);
    delete_provider(&table);
    EXPECT_EQ(Debts(), Lines());
    EXPECT_EQ(WatchCount(setting::POLICY), 0);
    Reset();
}

void Provider::Offer(const std::string& policy, const char* current) {
    Publish(setting::POLICY, policy);
    if (current != nullptr) {
        Set(setting::CURRENT, current);
    }
    ClearCalls();
}
