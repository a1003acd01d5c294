// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Commands of the tool. Each is one file: a function that adds the command to the command line, and
// what it runs.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace CLI {
class App;
}

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

// What the command line asks for: the callback of the command that was given sets it, main() calls
// it once the whole command line has been understood. Returns the exit code.
struct Invocation {
  std::function<int()> run;
};

// Adds one command to `app`: a subcommand with its options, whose callback sets invocation.run.
// Both outlive the call. A new command is declared here and listed in main.cc.
using AddCommand = void (*)(CLI::App &app, Invocation &invocation);

void AddCompile(CLI::App &app, Invocation &invocation);
void AddDecompile(CLI::App &app, Invocation &invocation);
void AddDump(CLI::App &app, Invocation &invocation);
void AddCheck(CLI::App &app, Invocation &invocation);
void AddPlay(CLI::App &app, Invocation &invocation);

}  // namespace tool
