#include "utils/tool_runner.h"

#include <sys/wait.h>

#include <csignal>

#include "platform/log.h"
#include "platform/resources.h"
#include "support.h"
#include "utils/version_probe.h"

namespace tkv::test {
namespace {

const std::string kBegin = "taskArrayPipes      - begin\n";

/// None of these tests leaves a child or an open descriptor behind.
class Tools : public testing::Test {
  protected:
    void SetUp() override {
        errorsOf([] { logLine("the connection to the system's log stays open"); });
        descriptors_ = namesIn("/dev/fd");
    }
    void TearDown() override {
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
        EXPECT_EQ(namesIn("/dev/fd"), descriptors_);
    }

    std::string executable(const std::string& name, const std::string& content) const {
        std::string path = folder.write(name, content);
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }

    const TempFolder folder;

  private:
    Strings descriptors_;
};

TEST_F(Tools, AnswerWhatTheLastCommandPrints) {
    const ScopedVariable home("HOME", folder.path());
    const ScopedVariable type("LC_CTYPE", "C");
    const ScopedVariable other("TKV_OTHER", "a=b");
    const std::string noProgram = folder.write("text", "one\ntwo\n");
    const std::string wrongFormat = executable("wrong", "no program");
    const struct {
        Strings words;
        std::optional<std::string> answer;
        std::string errors = "";
    } cases[] = {
        {{"/bin/sh", "-c", "echo out; echo err >&2; exit 3"}, "out\nerr\n"},
        {{"/bin/sh", "-c", "echo err >&2", "|", "/usr/bin/wc", "-c"}, "0\n", "err\n"},
        {{"/bin/cat", "~/text", "|", "/usr/bin/wc", "-l"}, "2\n"},
        {{"/bin/echo", "~", "~/x://y", "a b", ""}, folder.path() + " ~/x://y a b \n"},
        {{"/usr/bin/env", "|", "/bin/grep", "-E", "^(FONTCONFIG_(FILE|PATH)|LC_CTYPE|TKV_OTHER)="},
         "FONTCONFIG_FILE=" + folder.path() +
             "/Library/Application Support/Kinoveld/fonts.conf\n"
             "FONTCONFIG_PATH=/private/tmp/Kinoveld/app.app/Contents/Resources/fonts\n"
             "LC_CTYPE=en_US.UTF-8\nTKV_OTHER=a=b\n"},
        {{"/usr/bin/printf", " "}, std::nullopt},
        {{"/usr/bin/printf", " \\n"}, std::nullopt},
        {{"/usr/bin/printf", "\\n "}, "\n "},
        {{"/usr/bin/printf", "\\351"}, std::nullopt},
        {{"/usr/bin/printf", "a\\0b"}, std::string("a\0b", 3)},
        {{noProgram, "|", "/usr/bin/wc", "-c"}, "0\n"},
        {{"/usr/bin/yes", "|", wrongFormat, "|", "/usr/bin/wc", "-c"}, "0\n"},
        {{"/usr/bin/yes", "|", noProgram}, std::nullopt},
        {{"/bin/grep", "SigBlk", "/proc/self/status"}, "SigBlk:\t0000000000000000\n"},
        {{"/usr/bin/head", "-c", "8000000", "/dev/zero", "|", "/bin/cat", "|", "/usr/bin/wc", "-c"},
         "8000000\n"},
    };
    // Where the caller's signals stay ignored or blocked, `yes` complains about the broken pipe.
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    for (const auto& c : cases) {
        EXPECT_EQ(errorsOf([&] { EXPECT_EQ(taskArrayPipes(c.words), c.answer); }),
                  kBegin + c.errors)
            << testing::PrintToString(c.words);
    }
    std::signal(SIGPIPE, handler);
    sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    const std::string big = folder.write("big", std::string(8 << 20, 'x'));
    EXPECT_TRUE(taskArrayPipes({"/bin/cat", big, "|", "/bin/cat"}) == readText(big));
}

TEST_F(Tools, StartOnlyWhenAllAreThere) {
    const std::string trace = folder.file("trace");
    const Strings refused[] = {{},
                               {"/no/such", "|", "/usr/bin/touch", trace},
                               {"|", "/usr/bin/touch", trace},
                               {"/usr/bin/touch", trace, "|"}};
    for (const Strings& words : refused)
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(taskArrayPipes(words)); }), kBegin);
    const std::string seen = verboseErrorsOf([&] {
        EXPECT_FALSE(taskArrayPipes({"/usr/bin/touch", trace, "é", "|", "/no/such"}));
    });
    EXPECT_FALSE(fs::exists(trace));
    const std::string start = kBegin +
                              "taskArrayPipes      - 1\nseparatedArgsByTasksMa : (\n        (\n"
                              "        \"/usr/bin/touch\",\n        \"" +
                              trace +
                              "\",\n        \"\\U00e9\"\n    ),\n"
                              "        (\n        \"/no/such\"\n    )\n)\n"
                              "env post            : {\n    ";
    EXPECT_TRUE(seen.starts_with(start)) << seen;
    EXPECT_TRUE(seen.ends_with(";\n}\ntaskArrayPipes      : ma (\n    \"" + trace +
                               "\",\n    \"\\U00e9\"\n)\n"
                               "taskArrayPipes      :-( tool !present '/no/such'\n"))
        << seen;
}

TEST_F(Tools, AreWaitedForAsIsTheEndOfTheOutput) {
    // What runs on in the background prints once the program has exited and so closed the FIFO.
    const std::string forking = executable(
        "forking",
        "#!/bin/sh\nmkfifo $0.fifo\n(cat $0.fifo; echo late) &\nexec 3>$0.fifo\necho early");
    EXPECT_EQ(taskArrayPipes({forking}), "early\nlate\n");
    // The output ends long before the program has read its input.
    const std::string closing = executable("closing", "#!/bin/sh\nexec >$0.count 2>&1\nwc -c");
    EXPECT_FALSE(taskArrayPipes({"/usr/bin/head", "-c", "1000000", "/dev/zero", "|", closing}));
    EXPECT_EQ(readText(closing + ".count"), "1000000\n");
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
        {"echo version 0.7", false, false, 0},
        {nullptr, true, true, 0},
    };
    for (const auto& c : cases) {
        fs::remove_all(folder.file("tools"));
        if (c.spumux != nullptr) executable("tools/spumux", "#!/bin/sh\n" + std::string(c.spumux));
        if (c.withDvdauthor) folder.write("tools/dvdauthor", "");
        EXPECT_FLOAT_EQ(versionSpumux(c.isRequired, folder.path()), c.version)
            << (c.spumux != nullptr ? c.spumux : "no spumux");
    }
    executable("tools/spumux", "#!/bin/sh\necho version 0.7.2");
    EXPECT_TRUE(verboseErrorsOf([&] { versionSpumux(true, folder.path()); })
                    .ends_with("versionSpumux       : version 0.7.2\nreturnedFloat 0.070200\n"
                               "versionSpumuxDvdauth: 0.070200\n"));
    EXPECT_EQ(resourceFolder("/opt/A.app/Contents/MacOS/tool"), "/opt/A.app/Contents/Resources");
    EXPECT_EQ(resourceFolder("/opt/MacOS/tool"), "/opt/share/tkvDvdMenuImg");
    EXPECT_GT(versionSpumux(true), 0.06F) << "from " << resourceFolder();
}

}  // namespace
}  // namespace tkv::test
