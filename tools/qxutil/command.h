//===- qxutil/command.h - Subcommand registry of the CLI --------*- C++ -*-===//
//
// Each subcommand is one function in its own cmd_<name>.cpp, registered with
// QXUTIL_COMMAND. main.cpp dispatches on the first argument.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CLI_COMMAND_H
#define QXUTIL_CLI_COMMAND_H

#include <cstdio>

namespace qxcli {

/// A subcommand: receives the arguments after its name (argv[0] is the
/// command's name) and returns the process exit code.
struct Command {
  const char* name;
  const char* usage;   // one line: "name ARGS..."
  const char* summary; // one line for --help
  int (*run)(int argc, char** argv);
};

/// Registers a command; used through QXUTIL_COMMAND at namespace scope.
struct CommandRegistrar {
  explicit CommandRegistrar(const Command& c);
};

/// The registered commands, in name order; `count` receives their number.
const Command* const* Commands(int* count);

/// Prints "qxutil: MESSAGE" to stderr and returns `code` (the GNU form of a
/// command-line error).
int Fail(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace qxcli

#define QXUTIL_COMMAND(ident, usage, summary, fn)                                                  \
  static const ::qxcli::Command ident##_command{#ident, usage, summary, fn};                       \
  static ::qxcli::CommandRegistrar ident##_registrar(ident##_command)

#endif // QXUTIL_CLI_COMMAND_H
