#pragma once

namespace tkv {

/// What needs the desktop's libraries (Pango, GdkPixbuf, GIO and the dozen that they bring along)
/// is a module of its own: a run that writes overlays or tells its usage draws no text, and need
/// not wait for them. The first call loads it; it is never unloaded, since the libraries keep what
/// they have set up.
/// Answers the address of what the module calls `symbol`; null, and the first time a line in the
/// log says why, where the module is not installed or knows no such symbol.
const void* moduleSymbol(const char* symbol);

/// Whether something of the module was asked for in vain, so that what was to be drawn is not
/// whole.
bool wasModuleMissed();

/// A table of the module's functions, of the type and under the symbol that `Table` names; its
/// owner is the module. Null as moduleSymbol answers it.
template <typename Table>
const Table* moduleTable() {
    static const auto* const table = static_cast<const Table*>(moduleSymbol(Table::kSymbol));
    return table;
}

}  // namespace tkv
