//===- qxutil/string_module_source.h - A string module's C++ source -*- C++ -*-===//
#ifndef QXUTIL_CLI_STRING_MODULE_SOURCE_H
#define QXUTIL_CLI_STRING_MODULE_SOURCE_H

#include "rc_script.h"

#include <string>
#include <vector>

namespace qxcli {

/// StringModuleSource - the C++ source of a string module holding
/// `strings` (ascending by id, no id twice): built as a shared object, it
/// exports the table that LoadStringW and cResourceDLL read. It needs no
/// header and no library, and it is plain ASCII whatever the texts hold.
/// `script` names the resource script in the heading.
std::string StringModuleSource(const std::vector<RcString>& strings, const std::string& script);

/// StringLiteral - `text` as the body of an L"..." literal (without the
/// quotes) in ASCII: printable ASCII as it is, every other unit as a \x
/// escape; a literal is closed and reopened where a hex digit follows one.
std::string StringLiteral(const std::wstring& text);

} // namespace qxcli

#endif // QXUTIL_CLI_STRING_MODULE_SOURCE_H
