// The table, its start and its stop; list items; the provider's description.
#include <array>
#include <cstring>

#include "page.h"

using namespace recording;

namespace {

class Lifecycle : public Provider {
  protected:
    void* Slot(int index) const { return reinterpret_cast<void* const*>(page)[index]; }
};

const Lines INITIALIZE = {E(source::LIST, "Initialize", "Notify MVA_LIST_VCONF"),
                          "vconf_notify_key_changed db/menu/voice/mva_list (null)",
                          E(source::LIST, "_ParsingMVAPolicyResult_Legacy", "reason:Initialize"),
                          GetStr(setting::POLICY)};
const Lines FINALIZE = {E(source::LIST, "Finalize", "Ignore MVA_LIST_VCONF"),
                        "vconf_ignore_key_changed db/menu/voice/mva_list"};

ListItem* NewItem(int value, const char* text) {
    auto* item = static_cast<ListItem*>(std::calloc(1, sizeof(ListItem)));
    item->value = value;
    item->text = text != nullptr ? strdup(text) : nullptr;
    return item;
}

}  // namespace

TEST_F(Lifecycle, CreateFillsExactlyFourteenSlots) {
    constexpr std::array FILLED = {0, 8, 13, 14, 16, 17, 20, 23, 24, 39, 41, 44, 50, 51};
    for (int i = 0; i < 52; ++i) {
        const bool filled = std::find(FILLED.begin(), FILLED.end(), i) != FILLED.end();
        EXPECT_EQ(Slot(i) != nullptr, filled) << "slot " << i;
    }
}

TEST_F(Lifecycle, CreateWatchesThePolicyAndReadsItOnce) {
    void** table = nullptr;
    Set(setting::POLICY, "[]");
    EXPECT_EQ(Ask([&] { return create_provider(&table); }), 0);
    EXPECT_CALLS(INITIALIZE +
                 Lines{E(source::LIST, "_ParsingMVAPolicyResult_Legacy", "empty result")});
    EXPECT_EQ(delete_provider(&table), 0);
}

TEST_F(Lifecycle, CreateIgnoresAWatchThatTheStoreRefuses) {
    void** table = nullptr;
    Set(setting::POLICY, WholePolicy().c_str());
    Fail("vconf_notify_key_changed");
    EXPECT_EQ(create_provider(&table), 0);
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
    delete_provider(&table);
}

TEST_F(Lifecycle, CreatingTwiceGivesASecondTableAndReadsThePolicyAgain) {
    void** second = nullptr;
    Set(setting::POLICY, WholePolicy().c_str());
    EXPECT_EQ(create_provider(&second), 0);
    EXPECT_NE(second, reinterpret_cast<void**>(page));
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
    delete_provider(&second);
}

TEST_F(Lifecycle, CreateOnAMalformedPolicyLogsTheExceptionAndHandsTheTableOut) {
    void** table = nullptr;
    Set(setting::POLICY, R"([{"VAOrder":"first"}])");
    EXPECT_EQ(Ask([&] { return create_provider(&table); }), 0);
    ASSERT_NE(table, nullptr);
    EXPECT_NE(table[0], nullptr);
    EXPECT_NE(table[51], nullptr);
    const Lines records = CallsOf("log E general_voice_dataprovider.cpp create_provider ");
    ASSERT_EQ(records.size(), 1u);
    EXPECT_NE(records[0].find(" [EXCEPTION]"), std::string::npos) << records[0];
    EXPECT_EQ(delete_provider(&table), 0);
}

TEST_F(Lifecycle, CreateWithoutAPlaceForTheTableDoesNotCrash) {
    EXPECT_EQ(create_provider(nullptr), 0);
}

TEST_F(Lifecycle, DeleteStopsTheWatchAndKeepsTheList) {
    void** table = nullptr;
    create_provider(&table);
    Offer(WholePolicy());
    EXPECT_EQ(Ask([&] { return delete_provider(&table); }), 0);
    EXPECT_CALLS(FINALIZE);
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
}

TEST_F(Lifecycle, DeleteLeavesTheHostsPointerAsItWas) {
    void** table = nullptr;
    create_provider(&table);
    void** const before = table;
    delete_provider(&table);
    EXPECT_EQ(table, before);
}

TEST_F(Lifecycle, DeleteOfNullReturnsOneAndStillStopsTheList) {
    EXPECT_EQ(Ask([] { return delete_provider(nullptr); }), 1);
    EXPECT_CALLS(FINALIZE);
    EXPECT_EQ(WatchCount(setting::POLICY), 0);
}

TEST_F(Lifecycle, DeleteOfANullTableReturnsZeroAfterStoppingTheList) {
    void** table = nullptr;
    EXPECT_EQ(Ask([&] { return delete_provider(&table); }), 0);
    EXPECT_CALLS(FINALIZE);
    EXPECT_EQ(WatchCount(setting::POLICY), 0);
}

TEST_F(Lifecycle, AfterDeleteANewPolicyIsNotRead) {
    delete_provider(nullptr);
    Publish(setting::POLICY, WholePolicy());
    EXPECT_EQ(MVAList::GetVAListSize(), 0u);
}

// --- List items ---

TEST_F(Lifecycle, AnItemsTextIsThePointerAndNoCopy) {
    char own[] = "Orvik";
    const ListItem item = {7, own};
    char* text = nullptr;
    EXPECT_EQ(Ask([&] { return page->list_item_text(&item, &text); }), 0);
    EXPECT_EQ(text, own);
    EXPECT_CALLS(Lines{});
}

TEST_F(Lifecycle, AnItemsNullTextIsHandedOutAsNull) {
    const ListItem item = {7, nullptr};
    char other[] = "other";
    char* text = other;
    EXPECT_EQ(page->list_item_text(&item, &text), 0);
    EXPECT_EQ(text, nullptr);
}

TEST_F(Lifecycle, AnItemsValueIsStored) {
    const ListItem item = {-7, nullptr};
    int value = 0;
    EXPECT_EQ(Ask([&] { return page->list_item_value(&item, &value); }), 0);
    EXPECT_EQ(value, -7);
    EXPECT_CALLS(Lines{});
}

TEST_F(Lifecycle, TheKindOfEveryItemIsTwo) {
    const ListItem item = {9, nullptr};
    int kind = 0;
    EXPECT_EQ(Ask([&] { return page->list_item_kind(&item, &kind); }), 0);
    EXPECT_EQ(kind, 2);
    kind = 0;
    EXPECT_EQ(page->list_item_kind(nullptr, &kind), 0);
    EXPECT_EQ(kind, 2);
    EXPECT_CALLS(Lines{});
}

TEST_F(Lifecycle, NullItemsAndNullOutPointersAreNotTouched) {
    const ListItem item = {9, nullptr};
    char other[] = "other";
    char* text = other;
    int value = 5;
    EXPECT_EQ(page->list_item_text(nullptr, &text), 0);
    EXPECT_EQ(page->list_item_value(nullptr, &value), 0);
    EXPECT_EQ(text, other);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(page->list_item_text(&item, nullptr), 0);
    EXPECT_EQ(page->list_item_value(&item, nullptr), 0);
    EXPECT_EQ(page->list_item_kind(&item, nullptr), 0);
}

TEST_F(Lifecycle, FreeingAListFreesItsItemsAndTheirTexts) {
    auto** items = static_cast<ListItem**>(std::calloc(2, sizeof(ListItem*)));
    items[0] = NewItem(1, "one");
    items[1] = NewItem(2, nullptr);
    EXPECT_EQ(Ask([&] { return page->free_list_items(items, 2); }), 0);
    EXPECT_CALLS(Lines{});
}

TEST_F(Lifecycle, FreeingAListSkipsNullEntries) {
    auto** items = static_cast<ListItem**>(std::calloc(3, sizeof(ListItem*)));
    items[1] = NewItem(1, "one");
    EXPECT_EQ(page->free_list_items(items, 3), 0);
}

TEST_F(Lifecycle, FreeingAListWithACountBelowOneFreesTheArrayAlone) {
    for (const int count : {0, -1}) {
        auto** items = static_cast<ListItem**>(std::calloc(1, sizeof(ListItem*)));
        ListItem* item = NewItem(1, "one");
        items[0] = item;
        EXPECT_EQ(page->free_list_items(items, count), 0);
        EXPECT_STREQ(item->text, "one");
        std::free(item->text);
        std::free(item);
    }
}

TEST_F(Lifecycle, FreeingNoListDoesNotCrash) {
    EXPECT_EQ(page->free_list_items(nullptr, 0), 0);
    EXPECT_EQ(page->free_list_items(nullptr, 3), 0);
}

// --- The provider's description ---

TEST_F(Lifecycle, TheProviderDescribesItself) {
    const std::pair<const char*, const char*> properties[] = {
        {"provider/owner", "voice"},
        {"provider/main-component", "TP_VoiceInteraction"},
        {"provider/sub-component", "TP_VoiceSettings"}};
    for (const auto& [name, answer] : properties) {
        HostText text;
        EXPECT_EQ(Ask([&] { return page->provider_property(name, text.Out()); }), 0);
        EXPECT_EQ(text.Text(), answer) << name;
        EXPECT_CALLS(Lines{});
    }
}

TEST_F(Lifecycle, ADescriptionIsAZeroFilledBufferOf255Bytes) {
    char* text = nullptr;
    page->provider_property("provider/owner", &text);
    ASSERT_NE(text, nullptr);
    for (std::size_t i = std::strlen("voice"); i < 255; ++i) {
        ASSERT_EQ(text[i], '\0') << i;
    }
    std::free(text);
}

TEST_F(Lifecycle, EachDescriptionIsABufferOfItsOwn) {
    HostText first;
    HostText second;
    page->provider_property("provider/owner", first.Out());
    page->provider_property("provider/owner", second.Out());
    EXPECT_NE(*first.Out(), *second.Out());
}

TEST_F(Lifecycle, AnyOtherDescriptionLeavesTheTextAsItWas) {
    char other[] = "other";
    for (const char* name : {"provider/owner ", "provider", "Provider/owner", "", "provider/own",
                             static_cast<const char*>(nullptr)}) {
        char* text = other;
        EXPECT_EQ(page->provider_property(name, &text), 0);
        EXPECT_EQ(text, other);
    }
}

TEST_F(Lifecycle, ADescriptionWithoutAPlaceForItDoesNotCrash) {
    EXPECT_EQ(page->provider_property("provider/owner", nullptr), 0);
}
