// Files that the user names for what a verb writes: what is there is replaced only when it is a
// plain file, whole, and keeps what it was to others.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "vtv_process.h"

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

struct Way {
    std::string program;
    Words words;  // "FILE" stands for the file
};

std::string Line(const Way& way) {
    std::string line = way.program;
    for (const std::string& word : way.words) {
        line += " " + word;
    }
    return line;
}

class OutputFileTest : public VtvTest {
  protected:
    OutputFileTest() {
        Ok({"show"});
        Ok({"trace", "on"});
        Write("scenario.toml", "[[step]]\npress = \"voice-wake-up\"\n");
    }

    // Every verb that writes a file which its user names.
    std::vector<Way> Ways() const {
        return {{"vtv", {"dump", "FILE"}},
                {"vtv", {"snapshot", "FILE"}},
                {"vtv", {"trace", "--export", "FILE"}},
                {"vtv", {"run", Path("scenario.toml"), "--junit", "FILE"}},
#ifdef WITH_EXPLORER
                {"vtv-explore", {"table", "-q", "help:voice", "-o", "FILE"}}
#endif
        };
    }

    Output Run(const Way& way, const std::string& file, const std::string& out = "/dev/null") {
        Words words = way.words;
        std::replace(words.begin(), words.end(), std::string("FILE"), file);
        return RunInto(out, way.program, words);
    }

    mode_t ModeOf(const std::string& name) const {
        struct stat status = {};
        EXPECT_EQ(stat(Path(name).c_str(), &status), 0) << name;
        return status.st_mode & 07777U;
    }
};

// How a shell line begins whose program may mount what nobody else sees; "AS" in its environment is
// what a command begins with that is to run as this user. A chroot has no user namespaces, and its
// root is no mount point that could be made private.
std::string WayToMount() {
    const std::string uid = std::to_string(geteuid());
    const std::string gid = std::to_string(getegid());
    const std::string root = " env AS=";
    const std::string user =
        " env AS='setpriv --reuid=" + uid + " --regid=" + gid + " --clear-groups'";
    for (const std::string& way :
         {"unshare --mount" + root, "unshare --map-root-user --mount" + root,
          "unshare --mount --propagation unchanged" + root,
          "sudo -n unshare --mount --propagation unchanged" + user}) {
        if (std::system((way + " true >/dev/null 2>&1").c_str()) == 0) {
            return way;
        }
    }
    return "";
}

}  // namespace

TEST_F(OutputFileTest, ALinkIsNotFollowedAndNotReplaced) {
    for (const Way& way : Ways()) {
        Write("target", "before");
        fs::create_symlink(Path("target"), Path("link"));
        fs::create_symlink(Path("nothing"), Path("dangling"));
        for (const char* name : {"link", "dangling"}) {
            const Output output = Run(way, Path(name));
            EXPECT_EQ(output.code, 4) << Line(way) << name;
            EXPECT_THAT(output.err, HasSubstr(Path(name) + ": cannot be written: this is a link"));
            EXPECT_TRUE(fs::is_symlink(Path(name))) << Line(way);
            fs::remove(Path(name));
        }
        EXPECT_EQ(Read("target"), "before") << Line(way);
        EXPECT_FALSE(fs::exists(Path("nothing"))) << Line(way);
    }
}

TEST_F(OutputFileTest, PipesAndFoldersAreLeftAloneAtOnce) {
    for (const Way& way : Ways()) {
        ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
        fs::create_directory(Path("folder"));
        EXPECT_EQ(Run(way, Path("fifo")).code, 4) << Line(way);
        EXPECT_EQ(Run(way, Path("folder")).code, 4) << Line(way);
        EXPECT_TRUE(fs::is_fifo(Path("fifo"))) << Line(way);
        EXPECT_TRUE(fs::is_empty(Path("folder"))) << Line(way);
        fs::remove(Path("fifo"));
        fs::remove(Path("folder"));
    }
}

TEST_F(OutputFileTest, ADeviceStaysOne) {
    for (const Way& way : Ways()) {
        EXPECT_EQ(Run(way, "/dev/null").code, 0) << Line(way);
        EXPECT_EQ(Run(way, "/dev/full").code, 4) << Line(way);
        EXPECT_TRUE(fs::is_character_file("/dev/null"));
        EXPECT_TRUE(fs::is_character_file("/dev/full"));
    }
}

TEST_F(OutputFileTest, WhatIsOpenIsWrittenToAsItStands) {
    for (const Way& way : Ways()) {
        for (const char* name : {"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
            Write("out", "");
            const Output output = Run(way, name, Path("out"));
            EXPECT_EQ(output.code, 0) << Line(way) << name << output.err;
            EXPECT_NE(Read("out"), "") << Line(way) << name;
        }
    }
    EXPECT_FALSE(fs::exists("-"));
}

TEST_F(OutputFileTest, AReplacedFileKeepsItsModeAndANewOneHasThatOfTheUmask) {
    for (const Way& way : Ways()) {
        for (const mode_t mode : {0600U, 0640U, 0666U}) {
            Write("file", "before");
            ASSERT_EQ(chmod(Path("file").c_str(), mode), 0);
            EXPECT_EQ(Run(way, Path("file")).code, 0) << Line(way);
            EXPECT_EQ(ModeOf("file"), mode) << Line(way);
            EXPECT_NE(Read("file"), "before") << Line(way);
            fs::remove(Path("file"));
        }
        const mode_t before = umask(027);
        EXPECT_EQ(Run(way, Path("file")).code, 0) << Line(way);
        umask(before);
        EXPECT_EQ(ModeOf("file"), 0640U) << Line(way);
        fs::remove(Path("file"));
    }
}

TEST_F(OutputFileTest, AReplacedFileKeepsItsOwner) {
    if (geteuid() == 0) {  // nobody else could give a file away
        for (const Way& way : Ways()) {
            Write("file", "before");
            ASSERT_EQ(chown(Path("file").c_str(), 12345, 23456), 0);
            EXPECT_EQ(Run(way, Path("file")).code, 0) << Line(way);
            struct stat status = {};
            ASSERT_EQ(stat(Path("file").c_str(), &status), 0);
            EXPECT_EQ(status.st_uid, 12345U) << Line(way);
            EXPECT_EQ(status.st_gid, 23456U) << Line(way);
            fs::remove(Path("file"));
        }
    }
}

TEST_F(OutputFileTest, AnotherNameOfAReplacedFileKeepsWhatItHad) {
    for (const Way& way : Ways()) {
        Write("file", "before");
        fs::create_hard_link(Path("file"), Path("other"));
        EXPECT_EQ(Run(way, Path("file")).code, 0) << Line(way);
        EXPECT_EQ(Read("other"), "before") << Line(way);
        EXPECT_NE(Read("file"), "before") << Line(way);
        fs::remove(Path("file"));
        fs::remove(Path("other"));
    }
}

TEST_F(OutputFileTest, AFullOrReadOnlyDiskLeavesTheFileAsItWasAndNothingBesideIt) {
    const std::string mounts = WayToMount();
    ASSERT_NE(mounts, "") << "neither a namespace nor sudo lets this test mount a disk";
    fs::create_directory(Path("disk"));
    for (const Way& way : Ways()) {
        std::string line = (fs::path(VTV).parent_path() / way.program).string();
        for (const std::string& word : way.words) {
            line += " " + (word == "FILE" ? Path("disk") + "/$1" : word);
        }
        Write("disk.sh", "set -eu\ntry() { code=0; $AS " + line +
                             " || code=$?; [ $code -eq 4 ]; }\n"
                             "mount -t tmpfs -o size=8k,mode=777 none " +
                             Path("disk") + "\ncd " + Path("disk") +
                             "\n$AS sh -c 'echo before > file; echo filler > filler'\n"
                             "try file; try new\nmount -o remount,bind,ro " +
                             Path("disk") +
                             "\ntry file; try new\n"
                             "[ \"$(cat file)\" = before ]; [ \"$(echo *)\" = 'file filler' ]\n");
        const std::string run = mounts + " VTV_HOME=" + Path("tvs") + " sh " + Path("disk.sh") +
                                " >" + Path("out") + " 2>&1";
        EXPECT_EQ(std::system(run.c_str()), 0) << Line(way) << "\n" << Read("out");
    }
}

TEST_F(OutputFileTest, OnlyARecordingIsAddedTo) {
    const std::vector<std::pair<std::string, std::string>> files = {
        {"comments", "# Dear diary\n"},
        {"blank", "\n"},
        {"title", "title = \"mine\"\n"},
        {"scenario", "[[step]]\nsay = \"by hand\"\n"},
        {"similar", "# A recording: vtv --record may add to it. Not quite\n"},
    };
    for (const auto& [name, text] : files) {
        Write(name, text);
        const Output output = Vtv({"press", "voice-wake-up", "--record", Path(name)});
        EXPECT_EQ(output.code, 2) << name;
        EXPECT_THAT(output.err, HasSubstr(Path(name) + ": this was not recorded by vtv")) << name;
        EXPECT_EQ(Read(name), text) << name;
        EXPECT_EQ(Item("voice-wake-up")["value"], 1) << name;
    }
    Write("passwd", "root:x:0:0:root:/root:/bin/bash\n");
    EXPECT_EQ(Vtv({"press", "voice-wake-up", "--record", Path("passwd")}).code, 2);
    EXPECT_EQ(Read("passwd"), "root:x:0:0:root:/root:/bin/bash\n");
}

TEST_F(OutputFileTest, ARecordingIsNotReachedThroughALink) {
    Ok({"press", "voice-wake-up", "--record", Path("real.toml")});
    const std::string before = Read("real.toml");
    fs::create_symlink(Path("real.toml"), Path("link.toml"));
    fs::create_symlink(Path("nothing.toml"), Path("dangling.toml"));
    EXPECT_EQ(Vtv({"network", "connected", "--record", Path("link.toml")}).code, 2);
    EXPECT_EQ(Vtv({"network", "connected", "--record", Path("dangling.toml")}).code, 2);
    EXPECT_EQ(Read("real.toml"), before);
    EXPECT_FALSE(fs::exists(Path("nothing.toml")));
    ASSERT_EQ(chmod(Path("real.toml").c_str(), 0600), 0);
    Ok({"network", "connected", "--record", Path("real.toml")});
    EXPECT_EQ(ModeOf("real.toml"), 0600U);
    EXPECT_NE(Read("real.toml"), before);
}

TEST_F(OutputFileTest, WhatIsReadIsAPlainFileOfALimitedSize) {
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    std::ofstream(Path("huge")) << "#";
    fs::resize_file(Path("huge"), (std::uintmax_t{16} << 20U) + 1);
    const std::vector<Words> verbs = {{"load", "FILE"},          {"restore", "FILE"},
                                      {"import", "FILE", "new"}, {"policy", "publish", "FILE"},
                                      {"run", "FILE"},           {"run", "--check", "FILE"}};
    const std::vector<std::pair<std::string, std::string>> files = {
        {Path("fifo"), "no plain file"},
        {"/dev/zero", "no plain file"},
        {Path("huge"), "has more than 16 MiB"}};
    for (const Words& verb : verbs) {
        for (const auto& [file, reason] : files) {
            Words words = verb;
            std::replace(words.begin(), words.end(), std::string("FILE"), file);
            const Output output = RunInto("/dev/null", "vtv", words);
            EXPECT_EQ(output.code, 2) << verb[0] << " " << file << output.err;
            EXPECT_THAT(output.err, HasSubstr(file + ":")) << verb[0];
            EXPECT_THAT(output.err, HasSubstr(reason)) << verb[0];
        }
    }
    EXPECT_EQ(Vtv({"new", "n", "--model", Path("fifo")}).code, 3);
    EXPECT_THAT(Vtv({"new", "n", "--model", Path("huge")}).err, HasSubstr("has more than 16 MiB"));
    EXPECT_FALSE(fs::exists(Path("tvs/n")));
    EXPECT_FALSE(fs::exists(Path("tvs/new")));
    EXPECT_THAT(Vtv({"load", "-"}, std::string((16U << 20U) + 1, ' ')).err,
                HasSubstr("the standard input has more than 16 MiB"));
    Write("policy.sh", std::string(VTV) + " policy publish <(echo '[]')");
    environment["VTV_TV"] = Path("tvs/default");
    EXPECT_EQ(std::system(("VTV_HOME=" + Path("tvs") + " bash " + Path("policy.sh")).c_str()), 0);
    EXPECT_EQ(Ok({"policy", "show"}), "The policy offers no assistant.\n");
}
