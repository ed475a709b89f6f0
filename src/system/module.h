#pragma once

namespace tkv {

/// What needs the desktop's libraries (Pango, GdkPixbuf, GIO and the dozen that they bring along)
/// is a module of its own: a run that writes overlays or tells its usage draws no text, and need
/// not wait for them. The first call loads it; it is never unloaded, since the libraries keep what
/// they have set up.
/// Answers the address of what the module calls `symbol`. Throws std::runtime_error where the
/// module is not installed or knows no such symbol.
const void* moduleSymbol(const char* symbol);

/// A table of the module's functions, of the type and under the symbol that `Table` names; its
/// owner is the module.
template <typename Table>
const Table& moduleTable() {
    static const auto* const table = static_cast<const Table*>(moduleSymbol(Table::kSymbol));
    return *table;
}

}  // namespace tkv
