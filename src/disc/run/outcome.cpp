#include "disc/run/outcome.h"

#include <fmt/format.h>

#include <filesystem>
#include <new>
#include <string>

namespace tkv::disc {

namespace fs = std::filesystem;

Outcome outcomeOf(const std::function<std::vector<Fault>()>& run) {
    try {
        const std::vector<Fault> leftOut = run();
        return {leftOut.empty() ? Outcome::How::made : Outcome::How::lacking, leftOut};
    } catch (const Interrupted&) {
        return {Outcome::How::interrupted, {}};
    } catch (const DiscError& error) {
        return {Outcome::How::failed, error.faults()};
    } catch (const fs::filesystem_error& error) {
        const std::string path = error.path1().string();
        const std::string words = fmt::format("{}: {}.", path, error.code().message());
        return {Outcome::How::failed, {{path, words}}};
    } catch (const std::bad_alloc&) {
        throw;  // There may be no memory for words, either.
    } catch (const std::exception& error) {
        return {Outcome::How::failed, {{"", error.what()}}};
    }
}

}  // namespace tkv::disc
