#include "utils/tool_runner.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>

#include "platform/log.h"
#include "platform/resources.h"
#include "support.h"
#include "utils/version_probe.h"

namespace tkv {
namespace {

namespace fs = std::filesystem;
using test::errorsOf;
using test::ScopedVariable;
using test::verboseErrorsOf;

using Words = std::vector<std::string>;

const std::string kBegin = "taskArrayPipes      - begin\n";

/// None of these tests leaves a child or an open descriptor behind.
class Tools : public testing::Test {
  protected:
    void SetUp() override {
        errorsOf([] { logLine("the connection to the system's log stays open"); });
        descriptors_ = test::namesIn("/dev/fd");
    }
    void TearDown() override {
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
        EXPECT_EQ(test::namesIn("/dev/fd"), descriptors_);
    }

    /// Makes a program of lines for the shell.
    std::string script(const std::string& name, const std::string& lines) const {
        return executable(name, "#!/bin/sh\n" + lines + "\n");
    }
    std::string executable(const std::string& name, const std::string& content) const {
        std::string path = folder.write(name, content);
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }

    const test::TempFolder folder;

  private:
    Words descriptors_;
};

TEST_F(Tools, AnswerWhatTheLastCommandPrints) {
    const ScopedVariable home("HOME", folder.path());
    const ScopedVariable type("LC_CTYPE", "C");
    const ScopedVariable other("TKV_OTHER", "a=b");
    const std::string noProgram = folder.write("text", "one\ntwo\n");
    const std::string wrongFormat = executable("wrong", "no program");
    const struct {
        Words words;
        std::optional<std::string> answer;
    } cases[] = {
        {{"/bin/sh", "-c", "echo out; echo err >&2; exit 3"}, "out\nerr\n"},
        {{"/bin/cat", "~/text", "|", "/usr/bin/wc", "-l"}, "2\n"},
        {{"/bin/echo", "~", "~/x://y", "a b", ""}, folder.path() + " ~/x://y a b \n"},
        {{"/usr/bin/env", "|", "/bin/grep", "-E", "^(FONTCONFIG_(FILE|PATH)|LC_CTYPE|TKV_OTHER)="},
         "FONTCONFIG_FILE=" + folder.path() +
             "/Library/Application Support/Kinoveld/fonts.conf\n"
             "FONTCONFIG_PATH=/private/tmp/Kinoveld/app.app/Contents/Resources/fonts\n"
             "LC_CTYPE=en_US.UTF-8\nTKV_OTHER=a=b\n"},
        {{"/usr/bin/printf", ""}, std::nullopt},
        {{"/usr/bin/printf", " "}, std::nullopt},
        {{"/usr/bin/printf", "\\n"}, std::nullopt},
        {{"/usr/bin/printf", " \\n"}, std::nullopt},
        {{"/usr/bin/printf", "\\n "}, "\n "},
        {{"/usr/bin/printf", "\\303\\251"}, "é"},
        {{"/usr/bin/printf", "\\351"}, std::nullopt},
        {{"/usr/bin/printf", "a\\0b"}, std::string("a\0b", 3)},
        {{noProgram, "|", "/usr/bin/wc", "-c"}, "0\n"},
        {{"/usr/bin/yes", "|", wrongFormat, "|", "/usr/bin/wc", "-c"}, "0\n"},
        {{"/usr/bin/yes", "|", noProgram}, std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(errorsOf([&] { EXPECT_EQ(taskArrayPipes(c.words), c.answer); }), kBegin)
            << testing::PrintToString(c.words);
    }
    const Words complaining = {"/bin/sh", "-c", "echo err >&2", "|", "/usr/bin/wc", "-c"};
    EXPECT_EQ(errorsOf([&] { EXPECT_EQ(taskArrayPipes(complaining), "0\n"); }), kBegin + "err\n");
}

TEST_F(Tools, StartOnlyWhenAllAreThere) {
    const std::string trace = folder.file("trace");
    const Words refused[] = {{},
                             {"/no/such", "|", "/usr/bin/touch", trace},
                             {"|", "/usr/bin/touch", trace},
                             {"/usr/bin/touch", trace, "|"},
                             {"/usr/bin/touch", trace, "|", "|", "/bin/cat"}};
    for (const Words& words : refused) {
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(taskArrayPipes(words)); }), kBegin);
        EXPECT_FALSE(fs::exists(trace)) << testing::PrintToString(words);
    }
    const Words words = {"/usr/bin/touch", trace, "é", "|", "/no/such"};
    const std::string missing = "taskArrayPipes      :-( tool !present '/no/such'\n";
    EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(taskArrayPipes(words)); }), kBegin + missing);
    EXPECT_FALSE(fs::exists(trace));

    const std::string seen = verboseErrorsOf([&] { taskArrayPipes(words); });
    const std::string start = kBegin +
                              "taskArrayPipes      - 1\n"
                              "separatedArgsByTasksMa : (\n        (\n"
                              "        \"/usr/bin/touch\",\n        \"" +
                              trace +
                              "\",\n        \"\\U00e9\"\n    ),\n"
                              "        (\n        \"/no/such\"\n    )\n)\n"
                              "env post            : {\n    ";
    const std::string end =
        ";\n}\ntaskArrayPipes      : ma (\n    \"" + trace + "\",\n    \"\\U00e9\"\n)\n" + missing;
    EXPECT_TRUE(seen.starts_with(start)) << seen;
    EXPECT_TRUE(seen.ends_with(end)) << seen;
}

TEST_F(Tools, MoveMegabytes) {
    const std::string content(8 << 20, 'x');
    const std::string file = folder.write("big", content);
    EXPECT_EQ(taskArrayPipes({"/bin/cat", file, "|", "/bin/cat", "|", "/usr/bin/wc", "-c"}),
              std::to_string(content.size()) + "\n");
    EXPECT_TRUE(taskArrayPipes({"/bin/cat", file, "|", "/bin/cat"}) == content);
}

TEST_F(Tools, AreWaitedForAsIsTheEndOfTheOutput) {
    // What runs on in the background prints once the program has exited and so closed the FIFO.
    const std::string forking = script("forking",
                                       "mkfifo $0.fifo\n"
                                       "(cat $0.fifo; echo late) &\n"
                                       "exec 3>$0.fifo\n"
                                       "echo early");
    EXPECT_EQ(taskArrayPipes({forking}), "early\nlate\n");
    // The output ends long before the program has read its input.
    const std::string closing = script("closing", "exec >$0.count 2>&1\nwc -c");
    EXPECT_FALSE(taskArrayPipes({"/usr/bin/head", "-c", "1000000", "/dev/zero", "|", closing}));
    EXPECT_EQ(test::readText(closing + ".count"), "1000000\n");
}

TEST_F(Tools, GetTheirSignals) {
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    // Where the signal is ignored, `yes` complains about the broken pipe.
    EXPECT_EQ(errorsOf([] {
                  taskArrayPipes({"/usr/bin/yes", "|", "/usr/bin/head", "-n", "1"});
              }),
              kBegin);
    EXPECT_EQ(taskArrayPipes({"/bin/grep", "SigBlk", "/proc/self/status"}),
              "SigBlk:\t0000000000000000\n");
    std::signal(SIGPIPE, handler);
    sigprocmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(Tools, TellTheVersionOfSpumux) {
    const struct {
        const char* spumux;  ///< Its lines; none when it is missing.
        bool isRequired, withDvdauthor;
        float version;
    } cases[] = {
        {"echo 'spumux, version 0.06'", true, false, 0.06F},
        {"echo 'DVDAuthor::spumux, version 0.7.2.'", false, true, 0.0702F},
        {"echo Usage: >&2; echo ' version 0.6.1 version 0.9' >&2; exit 1", true, true, 0.0601F},
        {"echo version 3; echo version x; echo version 1.5; echo version 1.6", true, true, 0.05F},
        {"test \"$*\" = -h && echo version 0.5", true, true, 0.05F},
        {"echo 'version: 0.7'; echo version", true, true, 0},
        {"echo", true, true, 0},
        {"", true, true, 0},
        {"echo version 0.7; touch $0.trace", false, false, 0},
        {nullptr, true, true, 0},
        {nullptr, false, true, 0},
    };
    for (const auto& c : cases) {
        fs::remove_all(folder.file("tools"));
        if (c.spumux != nullptr) script("tools/spumux", c.spumux);
        if (c.withDvdauthor) folder.write("tools/dvdauthor", "");
        EXPECT_FLOAT_EQ(versionSpumux(c.isRequired, folder.path()), c.version)
            << (c.spumux != nullptr ? c.spumux : "no spumux");
        EXPECT_FALSE(fs::exists(folder.file("tools/spumux.trace")));
    }
    EXPECT_TRUE(verboseErrorsOf([&] {
                    versionSpumux(false, folder.path());
                }).ends_with("versionSpumux       : nil\n"));
    script("tools/spumux", "echo version 0.7.2");
    EXPECT_TRUE(verboseErrorsOf([&] { versionSpumux(true, folder.path()); })
                    .ends_with("versionSpumux       : version 0.7.2\n"
                               "returnedFloat 0.070200\n"
                               "versionSpumuxDvdauth: 0.070200\n"));
}

TEST_F(Tools, AreFoundAmongTheResources) {
    EXPECT_EQ(resourceFolder("/opt/A.app/Contents/MacOS/tool"), "/opt/A.app/Contents/Resources");
    EXPECT_EQ(resourceFolder("/opt/MacOS/tool"), "/opt/share/tkvDvdMenuImg");
    EXPECT_EQ(resourceFolder("/usr/bin/tool"), "/usr/share/tkvDvdMenuImg");
    EXPECT_GT(versionSpumux(true), 0.06F) << "from " << resourceFolder();
}

}  // namespace
}  // namespace tkv
