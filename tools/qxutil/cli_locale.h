//===- qxutil/cli_locale.h - The --locale option of the CLI ------*- C++ -*-===//
#ifndef QXUTIL_CLI_LOCALE_H
#define QXUTIL_CLI_LOCALE_H

namespace qxcli {

/// PinThreadLocale - makes the locale named by `arg` (an LCID such as 1031 or
/// 0x407, or a name such as de-DE) the thread locale; false when it names no
/// locale of the database. Call it before the thread's first library call:
/// the services read the locale when they are built.
bool PinThreadLocale(const char* arg);

} // namespace qxcli

#endif // QXUTIL_CLI_LOCALE_H
