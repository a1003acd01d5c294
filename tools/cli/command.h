// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Commands of the tool, and what they have in common on the command line. A command is a function
// that adds it with its options, and what it runs.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tool {

// What the process ends with.
enum ExitCode {
  kDone = 0,
  kFailed = 1,  // the run or the check failed
  kBad = 2,     // the file or the command line is bad
};

// Thrown where a command can go no further. main() prints the message as an error and exits with
// the code. `place` names what it is about, as "FILE:LINE:COLUMN" or "FILE: offset 0x1A2 (record
// 7)"; it is empty if the message says it all.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string &message, std::string place = {}, ExitCode code = kBad)
      : std::runtime_error(message), place_(std::move(place)), code_(code) {}

  const std::string &place() const {
    return place_;
  }
  ExitCode code() const {
    return code_;
  }

 private:
  std::string place_;
  ExitCode code_;
};

// A file that an option names.
struct FileOption {
  const CLI::App *command;
  std::string name;         // of the option
  const std::string *path;  // empty: none was named
  bool output;
};

// What the command line asks for. The callback of the command that was given sets `run`, main()
// calls it once the whole command line has been understood. It returns the exit code.
struct Invocation {
  std::function<int()> run;
  std::vector<FileOption> files;  // of all commands
};

// Adds one command to `app`: a subcommand with its options, whose callback sets invocation.run.
// Both outlive the call. A new command is declared here and listed in main.cc.
using AddCommand = void (*)(CLI::App &app, Invocation &invocation);

void AddCompile(CLI::App &app, Invocation &invocation);
void AddDecompile(CLI::App &app, Invocation &invocation);
void AddDump(CLI::App &app, Invocation &invocation);
void AddCheck(CLI::App &app, Invocation &invocation);
void AddPlay(CLI::App &app, Invocation &invocation);

// Adds an option of `command` for a file that it reads, or for one that it writes, and returns it;
// `name` as CLI11 takes it: a positional one ("IN.tvb") must be given. `path` outlives the
// invocation.
CLI::Option *AddInput(CLI::App &command, Invocation &invocation, const std::string &name,
                      std::string &path, const std::string &description);
CLI::Option *AddOutput(CLI::App &command, Invocation &invocation, const std::string &name,
                       std::string &path, const std::string &description);

// Throws Failure if a file that the command given would write is one that it reads, or another one
// that it writes, under whatever name; or if two of its files are standard input or output. What
// can be shared is none of these: pipes, terminals and devices such as /dev/null.
void RefuseClashes(const Invocation &invocation);

// Adds --pin-ns: what a pin call takes, a real number of nanoseconds from 0 to 1e9.
void AddPinTime(CLI::App &command, double &nanoseconds);

}  // namespace tool
