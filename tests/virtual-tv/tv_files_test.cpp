// A TV's files are opened as plain files of its own folder, whatever has come to lie there since
// the TV was opened.
#include "virtual-tv/tv_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>

#include "tv_fixture.h"
#include "virtual-tv/folder_names.h"
#include "virtual-tv/store.h"

namespace fs = std::filesystem;

namespace vtv {
namespace {

class TvFilesTest : public testing::Test {
  protected:
    TvFilesTest() {
        fs::create_directories(folder / "tv/log");
        WriteText(tv + "/log/tv.log", "plain");
        WriteText(outside, "untouched");
    }

    // The reason why it was not opened; 0 when it was.
    int ErrorOfOpening(const std::string& name, int flags = O_RDONLY) const {
        errno = 0;
        const int fd = OpenTvFile(tv, name, flags);
        const int error = fd < 0 ? errno : 0;
        if (fd >= 0) {
            close(fd);
        }
        return error;
    }

    TemporaryFolder folder;
    const std::string tv = folder / "tv";
    const std::string outside = folder / "outside";
};

TEST_F(TvFilesTest, APlainFileIsOpenedReadAndWritten) {
    EXPECT_EQ(ErrorOfOpening("log/tv.log"), 0);
    EXPECT_EQ(ReadTvFile(tv, "log/tv.log"), "plain");
    EXPECT_EQ(ReadTvFile(tv, "log/tv.log", 3), "in");
    EXPECT_EQ(ReadTvFile(tv, "log/tv.log", 9), "");
    EXPECT_EQ(ReadTvFile(tv, "log/none"), std::nullopt);
    int error = 0;
    EXPECT_TRUE(WriteTvFile(tv, "log/tv.log", "new", &error));
    EXPECT_EQ(ReadText(tv + "/log/tv.log"), "new");
}

TEST_F(TvFilesTest, ATvMayBeNamedByALink) {
    fs::create_directory_symlink(tv, folder / "link");
    EXPECT_EQ(ReadTvFile(folder / "link", "log/tv.log"), "plain");
}

TEST_F(TvFilesTest, ALinkIsNeitherReadNorWrittenNorEmptied) {
    fs::create_symlink(outside, tv + "/link");
    for (const int flags : {O_RDONLY, O_WRONLY | O_CREAT, O_WRONLY | O_TRUNC, O_RDWR | O_APPEND}) {
        EXPECT_EQ(ErrorOfOpening("link", flags), ELOOP) << flags;
    }
    EXPECT_THROW(ReadTvFile(tv, "link"), Error);
    int error = 0;
    EXPECT_FALSE(WriteTvFile(tv, "link", "foreign", &error));
    EXPECT_EQ(error, ELOOP);
    EXPECT_EQ(ReadText(outside), "untouched");
}

TEST_F(TvFilesTest, NoLinkIsFollowedOnTheWay) {
    fs::create_directory(folder / "elsewhere");
    WriteText(folder / "elsewhere/file", "untouched");
    fs::create_directory_symlink(folder / "elsewhere", tv + "/log/link");
    EXPECT_EQ(ErrorOfOpening("log/link/file"), ENOTDIR);
    EXPECT_EQ(ErrorOfOpening("log/link/new", O_WRONLY | O_CREAT), ENOTDIR);
    EXPECT_FALSE(fs::exists(folder / "elsewhere/new"));
    EXPECT_LT(OpenTvFolder(tv, "log/link"), 0);
}

TEST_F(TvFilesTest, AFolderIsOpenedAsAFolderOnly) {
    EXPECT_EQ(ErrorOfOpening("log"), EINVAL);
    for (const char* name : {"", "log"}) {
        const int fd = OpenTvFolder(tv, name);
        EXPECT_GE(fd, 0) << name;
        close(fd);
    }
    EXPECT_LT(OpenTvFolder(tv, "log/tv.log"), 0);
}

TEST_F(TvFilesTest, APipeIsRefusedWithoutWaitingForItsOtherEnd) {
    ASSERT_EQ(mkfifo((tv + "/pipe").c_str(), 0600), 0);
    EXPECT_EQ(ErrorOfOpening("pipe"), EINVAL);
    EXPECT_EQ(ErrorOfOpening("pipe", O_RDWR), EINVAL);
    EXPECT_EQ(ErrorOfOpening("pipe", O_WRONLY), ENXIO);
}

TEST_F(TvFilesTest, AFileThatIsLargerThanAnyOfATvIsRefused) {
    WriteText(tv + "/large", "");
    fs::resize_file(tv + "/large", std::uintmax_t{256} << 20U);
    EXPECT_EQ(ErrorOfOpening("large"), 0);
    fs::resize_file(tv + "/large", (std::uintmax_t{256} << 20U) + 1);
    EXPECT_EQ(ErrorOfOpening("large"), EFBIG);
}

TEST_F(TvFilesTest, AFileThatOthersCanWriteIsRefused) {
    for (const mode_t mode : {0664, 0646}) {
        ASSERT_EQ(chmod((tv + "/log/tv.log").c_str(), mode), 0);
        EXPECT_EQ(ErrorOfOpening("log/tv.log"), EPERM);
    }
    ASSERT_EQ(chmod((tv + "/log/tv.log").c_str(), 0644), 0);
    EXPECT_EQ(ErrorOfOpening("log/tv.log"), 0);
}

// Its content means nothing, and also who can only read it can hold it.
TEST_F(TvFilesTest, AFileThatOthersCanWriteLocksAsAnyOther) {
    const std::string file = tv + "/lock";
    WriteText(file, "");
    ASSERT_EQ(chmod(file.c_str(), 0666), 0);
    const FileLock held(tv, "lock");
    const int fd = open(file.c_str(), O_RDWR);
    EXPECT_NE(flock(fd, LOCK_EX | LOCK_NB), 0);
    close(fd);
}

TEST_F(TvFilesTest, NobodyElseWritesIntoWhatIsMadeWhateverTheUmask) {
    const mode_t mask = umask(0);
    int error = 0;
    EXPECT_TRUE(WriteTvFile(tv, "new", "", &error));
    umask(mask);
    EXPECT_EQ(fs::status(tv + "/new").permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read |
                  fs::perms::others_read);
}

TEST_F(TvFilesTest, NothingIsMadeRenamedOrRemovedBehindALink) {
    const std::string elsewhere = folder / "elsewhere";
    fs::create_directories(elsewhere + "/below");
    WriteText(elsewhere + "/file", "untouched");
    fs::create_directory_symlink(elsewhere, tv + "/link");
    EXPECT_THROW(MakeTvFolder(tv, "link/new/folder"), Error);
    EXPECT_FALSE(RenameInTv(tv, "log/tv.log", "link/file"));
    EXPECT_FALSE(RenameInTv(tv, "link/file", "log/tv.log"));
    EXPECT_FALSE(RemoveTvFile(tv, "link/file"));
    EXPECT_FALSE(RemoveEmptyTvFolder(tv, "link/below"));
    EXPECT_FALSE(RemoveTvTree(tv, "link/below"));
    EXPECT_TRUE(NamesInTv(tv, "link").empty());
    EXPECT_EQ(WalkTvFolder(tv, "link", [](const auto&, const auto&) { return true; }), ENOTDIR);
    EXPECT_THROW(Store::Create(tv, "link"), Error);
    EXPECT_NE(Store(tv, "link", Store::Durability::kVolatile).Problem(), "");
    EXPECT_EQ(ReadText(tv + "/log/tv.log"), "plain");
    fs::create_directory_symlink(elsewhere, tv + "/log/link");
    EXPECT_TRUE(RemoveTvTree(tv, "log")) << "the link itself goes";
    EXPECT_FALSE(fs::exists(tv + "/log"));
    EXPECT_EQ(ReadText(elsewhere + "/file"), "untouched");
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere), {}), 2);
}

TEST_F(TvFilesTest, FoldersAreMadeListedAndRemovedWithAllThatTheyHold) {
    MakeTvFolder(tv, "a/b/c");
    MakeTvFolder(tv, "a/b");
    MakeTvFolder(tv, "");
    int error = 0;
    EXPECT_TRUE(WriteTvFile(tv, "a/b/c/file", "x", &error));
    std::vector<std::string> seen;
    const TvEntry look = [&](const std::string& name, const struct stat& info) {
        seen.push_back(name + (S_ISDIR(info.st_mode) ? "/" : ""));
        return name != "a/b/c";
    };
    EXPECT_EQ(WalkTvFolder(tv, "", look), 0);
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(seen, (std::vector<std::string>{"a/", "a/b/", "a/b/c/", "log/", "log/tv.log"}));
    EXPECT_EQ(NamesInTv(tv, "a/b"), std::vector<std::string>{"c"});
    EXPECT_FALSE(RemoveEmptyTvFolder(tv, "a/b"));
    EXPECT_TRUE(RenameInTv(tv, "a/b/c/file", "log/file"));
    EXPECT_TRUE(RemoveEmptyTvFolder(tv, "a/b/c"));
    EXPECT_TRUE(RemoveTvTree(tv, "a"));
    EXPECT_TRUE(RemoveTvTree(tv, "a")) << "there is nothing any more";
    EXPECT_TRUE(RemoveTvFile(tv, "log/file"));
}

// Deeper than any name of a file is long.
TEST_F(TvFilesTest, FoldersThatLieTooDeepAreNeitherWalkedNorRemoved) {
    constexpr rlim_t kMostOpen = 5000;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    ASSERT_GE(limit.rlim_max, kMostOpen);
    limit.rlim_cur = kMostOpen;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    std::vector<int> folders = {OpenTvFolder(tv, "")};
    while (folders.size() < 2200) {
        ASSERT_EQ(mkdirat(folders.back(), "d", kFolderMode), 0);
        folders.push_back(openat(folders.back(), "d", O_RDONLY | O_DIRECTORY));
    }
    EXPECT_EQ(WalkTvFolder(tv, "", [](const auto&, const auto&) { return true; }), ENAMETOOLONG);
    EXPECT_FALSE(RemoveTvTree(tv, "d"));
    EXPECT_EQ(errno, ENAMETOOLONG);
    for (; !folders.empty(); folders.pop_back()) {  // faster than by their names
        unlinkat(folders.back(), "d", AT_REMOVEDIR);
        close(folders.back());
    }
}

TEST_F(TvFilesTest, WhatCannotBeListedIsClosed) {
    const int fd = open((tv + "/log/tv.log").c_str(), O_RDONLY);
    EXPECT_TRUE(NamesIn(fd, "no folder").empty());
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

// A TV that is on while another program changes its folder.
class ChangedTvTest : public TvTest {
  protected:
    ChangedTvTest() {
        WriteText(folder / "outside", "untouched");
        TurnOn();
        tv->SetTraceEnabled(true);
    }
    // In place of what lies there.
    void Link(const std::string& name) {
        fs::remove_all(tv->Dir() + "/" + name);
        fs::create_symlink(folder / "outside", tv->Dir() + "/" + name);
    }
    // Links a folder in place of the TV's.
    std::string LinkFolder(const std::string& name) {
        std::string elsewhere = folder / "elsewhere";
        fs::create_directory(elsewhere);
        fs::remove_all(tv->Dir() + "/" + name);
        fs::create_directory_symlink(elsewhere, tv->Dir() + "/" + name);
        return elsewhere;
    }
    void ExpectNothingOutside() { EXPECT_EQ(ReadText(folder / "outside"), "untouched"); }
};

TEST_F(ChangedTvTest, NoRecordOfTheLogLeavesIt) {
    Link("log/tv.log");
    tv->Log(4, "hello");
    ExpectNothingOutside();
    ErrorOf(ErrorKind::kPlatform, [&] { tv->ReadLog(); });
}

TEST_F(ChangedTvTest, NoFolderOfItsLogLeadsElsewhere) {
    const std::string elsewhere = LinkFolder("log");
    tv->Log(4, "hello");
    EXPECT_TRUE(fs::is_empty(elsewhere));
}

TEST_F(ChangedTvTest, NoEventOfTheTraceLeavesItAndItIsNotClearedElsewhere) {
    Link("trace/events");
    ErrorOf(ErrorKind::kPlatform, [&] { tv->ReadTrace(); });
    tv->ClearTrace();
    ExpectNothingOutside();
    const std::string elsewhere = LinkFolder("trace");
    WriteText(elsewhere + "/events", "untouched");
    ErrorOf(ErrorKind::kPlatform, [&] { tv->ClearTrace(); });
    EXPECT_EQ(ReadText(elsewhere + "/events"), "untouched");
}

TEST_F(ChangedTvTest, NoRecordOfALaunchIsReadElsewhere) {
    Link("launches.jsonl");
    ErrorOf(ErrorKind::kPlatform, [&] { tv->Launches(); });
    ExpectNothingOutside();
}

TEST_F(ChangedTvTest, NoFileOfItsOwnerIsMadeOrRemovedElsewhere) {
    const std::string elsewhere = LinkFolder("owner/share");
    WriteText(elsewhere + "/mark", "");
    EXPECT_FALSE(tv->RemoveOwnerFile("share/mark"));
    ErrorOf(ErrorKind::kPlatform, [&] { tv->AddOwnerFile("share/other"); });
    EXPECT_TRUE(fs::exists(elsewhere + "/mark"));
    EXPECT_FALSE(fs::exists(elsewhere + "/other"));
    ErrorOf(ErrorKind::kPlatform, [&] { tv->AddOwnerFile("share/folder/other"); });
    EXPECT_FALSE(fs::exists(elsewhere + "/folder"));
    EXPECT_TRUE(tv->OwnerFiles().size() == 1) << "the link itself, and nothing behind it";
}

TEST_F(ChangedTvTest, NothingThatIsPutBackIsWrittenOrRemovedElsewhere) {
    Snapshot snapshot = tv->TakeSnapshot();
    snapshot.ownerFiles = {"share/folder/foreign", "share/foreign"};
    std::string elsewhere = LinkFolder("owner/share");
    WriteText(elsewhere + "/mark", "");
    tv->Restore(snapshot);  // which takes the link for a file
    EXPECT_EQ(tv->OwnerFiles(), snapshot.ownerFiles);
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere), {}), 1);
    snapshot.settings["db/new"] = 1;
    elsewhere = LinkFolder("settings");
    ErrorOf(ErrorKind::kPlatform, [&] { tv->Restore(snapshot); });
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere), {}), 1);
}

TEST_F(ChangedTvTest, WhyAnApplicationFailedIsNotToldElsewhere) {
    const std::string elsewhere = LinkFolder("apps");
    const std::string file = elsewhere + "/" + std::to_string(getpid()) + ".failed";
    WriteText(file, "untouched");
    tv->ReportFailure(Error(ErrorKind::kNo, "failed"));
    EXPECT_EQ(ReadText(file), "untouched");
}

}  // namespace
}  // namespace vtv
