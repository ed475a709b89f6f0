#pragma once

#include <cstddef>
#include <cstdint>

namespace tkv {

/// What needs the desktop's libraries (Pango, GdkPixbuf, GIO and the dozen that they bring along)
/// is a module of its own: a run that writes overlays or tells its usage draws no text, and need
/// not wait for them. The first call loads it; it is never unloaded, since the libraries keep what
/// they have set up.
/// Answers the address of the table that the module calls `symbol`, of so many bytes; null, and the
/// first time a line in the log says why, where the module is not installed, knows no such table,
/// or was built for another version of the program.
const void* moduleTable(const char* symbol, std::size_t bytes);

/// What each of the module's tables begins with. Program and module call each other in C++, so that
/// the one can use the other only when both know the same types.
struct TableStamp {
    std::uint64_t version;  ///< TKV_MODULE_VERSION, made from all headers that both may include.
    std::uint64_t bytes;    ///< Of the whole table.
    bool operator==(const TableStamp&) const = default;
};

/// Whether something of the module was asked for in vain, so that what was to be drawn is not
/// whole.
bool wasModuleMissed();

/// A table of the module's functions, of the type and under the symbol that `Table` names, which
/// begins with its stamp; its owner is the module. Null as the function above answers it.
template <typename Table>
const Table* moduleTable() {
    static const auto* const table =
        static_cast<const Table*>(moduleTable(Table::kSymbol, sizeof(Table)));
    return table;
}

}  // namespace tkv
