#pragma once

#include <cstddef>
#include <cstdint>

namespace tkv {

/// What needs the desktop's libraries (Pango, GdkPixbuf, GIO and the dozen that they bring along)
/// is a module of its own: a run that writes overlays or prints its usage draws no text, and need
/// not load them. The first call loads it lazily; it is never unloaded, since the libraries keep
/// global state.
/// Returns the address of the function table exported as `symbol`, of that many bytes; null, and
/// the first time a log line says why, where the module is not installed, has no such table, or was
/// built for another version of the program.
const void* moduleTable(const char* symbol, std::size_t bytes);

/// What each of the module's tables begins with. Program and module call each other through a C++
/// ABI, which is compatible only if both were compiled with the same types.
struct TableStamp {
    std::uint64_t version;  ///< TKV_MODULE_VERSION, a hash of all headers that both may include.
    std::uint64_t bytes;    ///< The size of the whole table.
    bool operator==(const TableStamp&) const = default;
};

/// Whether a call into the missing module has failed, so that what was drawn is incomplete.
bool wasModuleMissed();

/// A table of the module's functions, of the type and under the symbol that `Table` names, which
/// begins with its stamp; its owner is the module. Null as the function above returns it.
template <typename Table>
const Table* moduleTable() {
    static const auto* const table =
        static_cast<const Table*>(moduleTable(Table::kSymbol, sizeof(Table)));
    return table;
}

}  // namespace tkv
