#include "disc/run/tools.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <fstream>
#include <optional>
#include <system_error>
#include <utility>

#include "disc/run/environment.h"
#include "disc/run/fault.h"
#include "disc/run/media_inputs.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// With these set, programs write files that nobody asked for, colour their lines, take another
// standard than that which their input says, or speak another language; a script in a program's
// place complains of locales that are not installed, as if that was the film's fault.
constexpr std::array kHiddenVariables{
    "FFREPORT", "AV_LOG_FORCE_COLOR", "FFMPEG_DATADIR", "VIDEO_FORMAT", "LANG",   "LANGUAGE",
    "LC_ALL",   "LC_CTYPE",           "LC_MESSAGES",    "LC_NUMERIC",   "LC_TIME"};

// Bytes of what a program says that are kept at least, the last ones.
constexpr std::size_t kMostErrors = 64 << 10;

std::string_view packageOf(std::string_view program) {
    if (program == "ffprobe") return "ffmpeg";
    if (program == "spumux") return "dvdauthor";
    return program;
}

[[noreturn]] void complainMissing(std::string_view program) {
    const std::string_view instead =
        program == "genisoimage" ? ", or do without a disc image: --no-image" : "";
    throw DiscError(fmt::format("The program {} is missing. Install the package {}{}.", program,
                                packageOf(program), instead));
}

// How the program ended, as the end of a sentence; empty when all is well.
std::string complaint(const ProgramEnd& end, const std::string& program, const std::string& errors,
                      bool hasErrorLine) {
    const std::string words = lastWords(errors);
    switch (end.how) {
        case ProgramEnd::How::notStarted:
        case ProgramEnd::How::noFile:
            return std::generic_category().message(end.status);
        case ProgramEnd::How::killed:
            if (end.status == SIGXFSZ) return std::generic_category().message(EFBIG);
            return fmt::format("{} was ended by signal {}", program, end.status);
        case ProgramEnd::How::tooMuch:
            return fmt::format("{} has too much to say", program);
        default:
            break;
    }
    if (end.status == 0 && !hasErrorLine) return "";
    return words.empty() ? fmt::format("{} ended with status {}", program, end.status) : words;
}

}  // namespace

void requirePrograms(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (programPath(name).empty()) complainMissing(name);
    }
}

std::string Tools::run(Program program, const Failure& failure) const {
    std::string errors;
    std::optional<ForeignFormat> foreign;
    bool hasErrorLine = false;
    program.onError = [&, tell = std::move(program.onError)](std::string_view line) {
        if (tell) tell(line);
        if (!foreign) foreign = foreignFormat(line);
        if (line.starts_with("ERR")) {
            // What it says after its error does not matter any more.
            if (!hasErrorLine) errors.clear();
            hasErrorLine = true;
        }
        if (!hasErrorLine || line.starts_with("ERR")) errors += fmt::format("{}\n", line);
        if (errors.size() > 2 * kMostErrors) errors.erase(0, errors.size() - kMostErrors);
    };
    program.folder = folder_;
    program.hiddenVariables.assign(kHiddenVariables.begin(), kHiddenVariables.end());
    const std::vector<std::string> command = program.command;
    const std::string& name = command.front();
    program.command = guardedCommand(command);
    program.command.front() = programPath(name);
    if (program.command.front().empty()) complainMissing(name);
    const ProgramEnd end = runProgram(std::move(program), stop_);
    log(command, errors);
    if (end.how == ProgramEnd::How::stopped) throw Interrupted();
    const std::string cause = complaint(end, name, errors, hasErrorLine);
    if (cause.empty()) return errors;
    if (foreign) {
        throw NoFilm(fmt::format("{}: {}. Leave it out.", failure.task, foreign->words),
                     failure.about, foreign->kind);
    }
    // Where the system is to blame, no file is.
    const bool isAdvised = end.how != ProgramEnd::How::notStarted && !failure.advice.empty();
    throw DiscError(fmt::format("{}: {}.{}{}", failure.task, cause, isAdvised ? " " : "",
                                isAdvised ? failure.advice : ""),
                    failure.about);
}

void Tools::log(const std::vector<std::string>& command, const std::string& lines) const {
    if (folder_.empty() || lines.empty()) return;
    const std::lock_guard lock(mutex_);
    // Nothing depends on it: a disk that is full has other ways to tell.
    std::ofstream(joinPath(folder_, kLog), std::ios::app)
        << fmt::format("{}\n{}\n", fmt::join(command, " "), lines);
}

std::string Tools::run(const std::vector<std::string>& command, const Failure& failure) const {
    Program program;
    program.command = command;
    return run(std::move(program), failure);
}

int Tools::encode(const std::vector<std::string>& command, const Failure& failure,
                  const std::function<void(double seconds)>& onSeconds, Descriptor input,
                  std::function<void(std::string_view line)> onError) const {
    int frames = 0;
    Program program;
    program.command = command;
    program.stream = std::move(input);
    program.onError = std::move(onError);
    program.onOutput = [&](std::string_view line) {
        const auto valueOf = [line](std::string_view key, auto& value) {
            if (!line.starts_with(key)) return false;
            const std::string_view text = line.substr(key.size());
            return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
        };
        std::int64_t microseconds = 0;
        valueOf("frame=", frames);
        if (valueOf("out_time_us=", microseconds) && onSeconds)
            onSeconds(static_cast<double>(microseconds) / 1e6);
    };
    run(std::move(program), failure);
    return frames;
}

std::string lastWords(std::string_view lines) {
    while (lines.ends_with('\n') || lines.ends_with('.') || lines.ends_with(' '))
        lines.remove_suffix(1);
    std::string_view last = lines.substr(lines.rfind('\n') + 1);
    if (last.starts_with("    Last message repeated ") && last.size() < lines.size())
        return lastWords(lines.substr(0, lines.size() - last.size()));
    // "[mpeg2video @ 0x5581] ", "ERR:  ", "file:a film.mp4: "
    if (last.starts_with('[') && last.find("] ") != std::string_view::npos)
        last.remove_prefix(last.find("] ") + 2);
    if (const std::size_t colon = last.rfind(": "); colon != std::string_view::npos)
        last.remove_prefix(colon + 2);
    while (last.starts_with(' '))
        last.remove_prefix(1);
    return std::string(last);
}

}  // namespace tkv::disc
