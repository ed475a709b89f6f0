#include "utils/tool_runner.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <fstream>

#include "support.h"
#include "system/descriptor.h"
#include "system/log.h"
#include "system/resources.h"
#include "utils/version_probe.h"

namespace tkv::test::tools {

const std::string kBegin = "taskArrayPipes      - begin\n";

/// None of these tests leaves an open descriptor behind.
struct Tools : testing::Test {
    void SetUp() override {
        errorsOf([] { logLine("the connection to the system's log stays open"); });
        descriptors = namesIn("/dev/fd");
    }
    void TearDown() override {
        while (waitpid(-1, nullptr, 0) > 0) {
        }
        EXPECT_EQ(namesIn("/dev/fd"), descriptors);
    }

    std::string executable(const std::string& name, const std::string& content) const {
        std::string path = folder.write(name, content);
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }

    const TempFolder folder;
    Strings descriptors;
};

TEST_F(Tools, AnswerWhatTheLastCommandPrints) {
    const ScopedVariable home("HOME", folder.path()), type("LC_CTYPE", "C"), other("X_Y", "a=b");
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
        {{"/usr/bin/env", "|", "/bin/grep", "-E", "^(FONTCONFIG_(FILE|PATH)|LC_CTYPE|X_Y)="},
         "FONTCONFIG_FILE=" + folder.path() +
             "/Library/Application Support/Kinoveld/fonts.conf\n"
             "FONTCONFIG_PATH=/private/tmp/Kinoveld/app.app/Contents/Resources/fonts\n"
             "LC_CTYPE=en_US.UTF-8\nX_Y=a=b\n"},
        {{"/usr/bin/printf", " \\n"}, std::nullopt},
        {{"/usr/bin/printf", "\\n "}, "\n "},
        {{"/usr/bin/printf", "\\351"}, std::nullopt},
        {{"/usr/bin/printf", "a\\0b"}, std::string("a\0b", 3)},
        {{noProgram, "|", "/usr/bin/wc", "-c"}, "0\n"},
        {{"/usr/bin/yes", "|", wrongFormat, "|", "/usr/bin/wc", "-c"}, "0\n"},
        {{"/usr/bin/yes", "|", noProgram}, std::nullopt},
        {{"/bin/sh", "-c", "ulimit -c 0; kill -XFSZ $$; echo ignored"}, std::nullopt},
    };
    // Where the signal stays ignored, `yes` complains about the broken pipe.
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    const auto sizeHandler = std::signal(SIGXFSZ, SIG_IGN);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.words));
        EXPECT_EQ(errorsOf([&] { EXPECT_EQ(taskArrayPipes(c.words), c.answer); }),
                  kBegin + c.errors);
    }
    static_cast<void>(std::signal(SIGPIPE, handler));
    static_cast<void>(std::signal(SIGXFSZ, sizeHandler));
    const std::string big = folder.write("big", std::string(8 << 20, 'x'));
    EXPECT_TRUE(taskArrayPipes({"/bin/cat", big, "|", "/bin/cat"}) == readText(big));
}

TEST_F(Tools, StartOnlyWhenAllAreThere) {
    const std::string trace = folder.file("trace");
    for (const Strings& words :
         {Strings{}, {"|", "/usr/bin/touch", trace}, {"/usr/bin/touch", trace, "|"}})
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(taskArrayPipes(words)); }), kBegin);
    const std::string seen = verboseErrorsOf([&] {
        EXPECT_FALSE(taskArrayPipes({"/usr/bin/touch", trace, "é", "|", "/no/such"}));
    });
    EXPECT_TRUE(seen.ends_with(
        "\",\n    \"\\U00e9\"\n)\ntaskArrayPipes      :-( tool !present '/no/such'\n"))
        << seen;
    EXPECT_FALSE(fs::exists(trace));
}

TEST_F(Tools, AreReadToTheEndOfTheOutput) {
    // What runs on in the background prints once the program has exited and so closed the FIFO.
    const std::string forking = executable(
        "forking",
        "#!/bin/sh\nmkfifo $0.fifo\n(cat $0.fifo; echo late) &\nexec 3>$0.fifo\necho early");
    EXPECT_EQ(taskArrayPipes({forking}), "early\nlate\n");
    // Who runs on without a way to the output is not waited for: this one until somebody writes.
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(taskArrayPipes({"/bin/cat", fifo, "|", "/bin/echo", "hi"}), "hi\n");
    std::ofstream(fifo) << "end";
}

TEST_F(Tools, TellTheVersionOfSpumux) {
    for (const auto& [spumux, isRequired, withDvdauthor, version] :
         {std::tuple{"echo 'spumux, version 0.06'", true, false, 0.06F},
          {"echo 'DVDAuthor::spumux, version 0.7.2.'", false, true, 0.0702F},
          {"echo ' version 0.6.1 version 0.9' >&2; exit 1", true, true, 0.0601F},
          {"echo version 3; echo version x; echo version 1.5; echo version 1.6", true, true, 0.05F},
          {"test \"$*\" = -h && echo version 0.5", true, true, 0.05F},
          {"echo 'version: 0.7'; echo version", true, true, 0.0F},
          {"echo version 0.7", false, false, 0.0F},
          {"true", true, true, 0.0F},
          {"", true, true, 0.0F}}) {
        fs::remove_all(folder.file("tools"));
        if (spumux != std::string())
            executable("tools/spumux", std::string("#!/bin/sh\n") + spumux);
        if (withDvdauthor) folder.write("tools/dvdauthor", "");
        EXPECT_FLOAT_EQ(versionSpumux(isRequired, folder.path()), version) << spumux;
    }
    // One that prints for ever is cut within a character; one that hangs is granted no time here.
    executable("tools/spumux", "#!/bin/sh\necho 'version  0.7.2'; exec yes é");
    EXPECT_FLOAT_EQ(versionSpumux(true, folder.path()), 0.0702F);
    executable("tools/spumux", "#!/bin/sh\nwhile :; do :; done");
    EXPECT_FLOAT_EQ(versionSpumux(true, folder.path(), std::chrono::milliseconds(0)), 0.0F);
    while (waitpid(-1, nullptr, 0) > 0) {  // for ever, were they not killed
    }
    const Descriptor before(dup(STDIN_FILENO)), zeros(open("/dev/zero", O_RDONLY));
    dup2(zeros.number(), STDIN_FILENO);
    executable("tools/spumux", "#!/bin/sh\necho version 0.5 $(readlink /proc/$$/fd/0)");
    EXPECT_TRUE(verboseErrorsOf([&] {
                    versionSpumux(true, folder.path());
                }).find("0.5 /dev/null\n") != std::string::npos);
    dup2(before.number(), STDIN_FILENO);
    EXPECT_EQ(linesOfText("a\vb\fc\r\nd\n\n \u0085e\u2028f\u2029g"),
              (Strings{"a", "b", "c", "d", " ", "e", "f", "g"}));
    executable("tools/spumux", "#!/bin/sh\necho version 0.7.2");
    EXPECT_TRUE(verboseErrorsOf([&] { versionSpumux(true, folder.path()); })
                    .ends_with("versionSpumux       : version 0.7.2\nreturnedFloat 0.070200\n"
                               "versionSpumuxDvdauth: 0.070200\n"));
    EXPECT_EQ(resourceFolder("/opt/A.app/Contents/MacOS/tool"), "/opt/A.app/Contents/Resources");
    EXPECT_EQ(resourceFolder("/opt/MacOS/tool"), "/opt/share/tkvDvdMenuImg");
    EXPECT_EQ(resourceFolder(""), "") << "never the current folder";
    EXPECT_GT(versionSpumux(true), 0.06F) << "from " << resourceFolder();
}

}  // namespace tkv::test::tools
