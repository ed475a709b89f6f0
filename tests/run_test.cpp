#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

#include "disc/author/output_folder.h"
#include "disc/disc_maker.h"
#include "disc/run/own_folder.h"
#include "disc/run/parallel_tasks.h"
#include "disc/run/terminal_progress.h"
#include "disc/run/workshop.h"
#include "support.h"
#include "system/program_start.h"

// What runs of the disc's programs have in common.

namespace tkv::test::run_of_a_disc {

using namespace tkv::disc;

class Recorder : public ProgressReceiver {
  public:
    void say(std::string_view line) override { lines.emplace_back(line); }
    void tellResult(std::string_view line) override { lines.emplace_back(line); }
    void show(const ProgressState& state) override {
        lines.push_back(fmt::format("{} {}{}", state.part, state.task, state.isNewTask ? "!" : ""));
    }
    Strings lines;
};

TEST(Progress, AddsUpWeightsOfWhatIsDone) {
    Recorder recorder;
    Progress progress(recorder);
    progress.expect(8);
    {
        Progress::Task task(progress, "A", 4);
        task.reach(0.5);
        task.reach(0.25);  // never back
        task.reach(7);
    }
    progress.expect(-2);  // was done already
    { const Progress::Task task(progress, "B", 2); }
    { const Progress::Task task(progress, "C", 9); }
    progress.say("D");
    EXPECT_EQ(recorder.lines, (Strings{"0 A!", "0.25 A", "0.25 A", "0.5 A", "0.5 A",
                                       "0.6666666666666666 B!", "1 B", "1 C!", "1 C", "D"}));
}

TEST(Progress, SuitsWhereItIsShown) {
    using Style = TerminalProgress::Style;
    const auto shown = [](Style style) {
        return errorsOf([&] {
            TerminalProgress progress(style);
            progress.say("a\x1B[31m");
            progress.show({0.5, 61, "Encoding\nb", true});
            progress.show({0.75, {}, "soon after", false});
        });
    };
    EXPECT_EQ(shown(Style::quiet), "");
    const std::string plain = shown(Style::plain), terminal = shown(Style::terminal);
    EXPECT_NE(plain.find("\n 50 %, about 2 min left  Encoding"), std::string::npos) << plain;
    EXPECT_EQ(std::ranges::count(plain, '\n'), 2) << plain;
    EXPECT_EQ(plain.find("soon after"), std::string::npos);
    EXPECT_EQ(plain.find('\x1B'), std::string::npos) << "a film's name moves no cursor";
    EXPECT_TRUE(terminal.starts_with("\r\x1B[Ka")) << terminal;
    for (const auto& [name, moves] : {std::pair("xterm", true), {"dumb", false}, {"", false}}) {
        const ScopedVariable terminalName("TERM", name);
        EXPECT_EQ(movesCursor(), moves) << name;
    }
    EXPECT_TRUE(terminal.ends_with("Encoding b\r\x1B[K") || terminal.ends_with("\r\x1B[K"));
}

TEST(Workshop, KeepsResultsAndTouchesOnlyItsOwn) {
    const TempFolder folder;
    ProgramStop stop;
    folder.write("others/unfinished/letter", "dear");
    EXPECT_THROW(Workshop(folder.file("others"), stop), DiscError);
    EXPECT_EQ(readText(folder.file("others/unfinished/letter")), "dear");

    const std::string path = folder.file("own/work");
    const auto write = [](const Workshop& workshop) {
        return [&](const std::string& name) {
            workshop.tools().run({"sh", "-c", "pwd >" + name}, {"", "no shell", ""});
        };
    };
    const std::string a = Workshop::nameOf("film", ".mpg", {"a"});
    const std::string b = Workshop::nameOf("excerpt", "", {"b"});
    {
        Workshop workshop(path, stop);
        EXPECT_EQ(workshop.result(a, write(workshop)), a);
        EXPECT_EQ(workshop.result(b, write(workshop)), b);
        EXPECT_EQ(readText(workshop.path(b)), path + "\n") << "where programs run";
        const auto fail = [&](const std::string& name) {
            write(workshop)(name);
            throw std::runtime_error("half");
        };
        EXPECT_THROW(workshop.result("menu-0", fail), std::runtime_error);
    }
    folder.write("own/work/film-letter", "dear");
    folder.write("own/work/unfinished/left", "by a run that was killed");
    EXPECT_EQ(namesIn(path), (Strings{kMarker, b, a, "film-letter", "results", "unfinished"}));
    Workshop workshop(path, stop);
    EXPECT_EQ(namesIn(path + "/unfinished"), Strings{});
    workshop.result(a, [](const std::string&) { ADD_FAILURE() << "made twice"; });
    workshop.removeUnused();
    EXPECT_EQ(namesIn(path), (Strings{kMarker, a, "film-letter", "results", "unfinished"}));
    workshop.removeAll();
    EXPECT_EQ(namesIn(path), Strings{"film-letter"});
}

TEST(Programs, EndWithWhatTheyHaveStarted) {
    ProgramStop stop;
    const TempFolder folder;
    const std::string script = fmt::format("sleep 60 & echo $! >{}; wait", folder.file("child"));
    const auto child = [&] {
        const std::string text = readText(folder.file("child"));
        return text.empty() ? 0 : std::stoi(text);
    };
    std::jthread other([&] {
        while (child() == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        stop.stop();
    });
    EXPECT_THROW(Tools("", stop).run({"sh", "-c", script}, {}), Interrupted);
    EXPECT_FALSE(fs::exists(fmt::format("/proc/{}/fd/0", child())));
#ifdef __linux__
    // A thread that ends stands for a program that was killed.
    pid_t left = 0;
    std::jthread([&] {
        EXPECT_EQ(startProgram({"/bin/sleep", "60"}, environ, {}, Group::own, left), 0);
    }).join();
    int status = 0;
    waitpid(left, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
#endif
}

TEST(Programs, SpeakTheirOwnLanguage) {
    const ScopedVariable all("LC_ALL", "no locale"), german("LANG", "de_DE.UTF-8");
    ProgramStop stop;
    EXPECT_EQ(Tools("", stop).run({"bash", "-c", "echo [$LC_ALL$LANG] >&2"}, {}), "[]\n");
}

TEST(ParallelTasks, StopTheirOwnRunAtAFault) {
    ProgramStop stop, other;
    std::atomic<int> begun = 0;
    ParallelTasks tasks(20, stop, [&](std::size_t task) {
        ++begun;
        if (task == 1) throw DiscError("no", "film");
        Tools("", stop).run({"sleep", "60"}, {"", "sleeping", ""});
    });
    try {
        tasks.wait(19);
        ADD_FAILURE();
    } catch (const DiscError& error) {
        EXPECT_EQ(error.faults(), (std::vector<Fault>{{"film", "no"}}));
    }
    EXPECT_THROW(tasks.rethrow(), DiscError);
    EXPECT_THROW(Tools("", stop).run({"true"}, {}), Interrupted);
    EXPECT_EQ(Tools("", other).run({"sh", "-c", "echo heard >&2"}, {}), "heard\n");
    EXPECT_LT(begun, 20);
}

TEST(MakeDisc, SaysWhichFilmIsAtFaultAndLeavesNothing) {
    const TempFolder folder;
    const std::string here = fs::current_path();
    Options options;
    options.output = folder.file("out");
    options.project.films.emplace_back().path = folder.file("missing.mp4");
    for (const char* text : {"", "no film"}) {
        if (*text != '\0') folder.write("missing.mp4", text);
        Recorder recorder;
        ProgramStop stop;
        const Outcome outcome = makeDisc(options, recorder, stop);
        ASSERT_TRUE(outcome.how == Outcome::How::failed && outcome.faults.size() == 1);
        EXPECT_EQ(outcome.faults[0].about, folder.file("missing.mp4")) << outcome.faults[0].words;
        EXPECT_EQ(fs::exists(options.output), *text != '\0');
        EXPECT_EQ(fs::current_path(), here);
    }
    EXPECT_THROW(OutputFolder(options.output).requireSpace(INT64_MAX), DiscError);
    // What has ended one run does not end the next.
    run("ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=d=1:s=64x36 " +
        options.project.films[0].path);
    options.isPreview = true;
    ProgramStop stopped, stop;
    stopped.stop();
    Recorder recorder;
    EXPECT_EQ(makeDisc(options, recorder, stopped).how, Outcome::How::interrupted);
    EXPECT_EQ(makeDisc(options, recorder, stop).how, Outcome::How::made);
    EXPECT_EQ(recorder.lines.back(), "Drawn in " + options.output + "/menus: 1 menu page");
}

}  // namespace tkv::test::run_of_a_disc
