// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The tool's commands and their common command line options. A command is a function that adds its
// subcommand with the options, and the code that it runs.
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

// The exit codes of the process.
enum ExitCode {
  kDone = 0,
  kFailed = 1,  // the run or the check failed
  kBad = 2,     // the file or the command line is bad
  kCancelled = 3,
};

// Thrown where a command cannot continue. Run() prints the message as an error and exits with the
// code. `place` locates the error, as "FILE:LINE:COLUMN" or "FILE: offset 0x1A2 (record 7)"; it is
// empty if the message says it all.
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

// An option that names a file, or several.
struct FileOption {
  const CLI::App *command;
  std::string name;                                 // of the option
  std::function<std::vector<std::string>()> paths;  // an empty one if not given
  bool output;
};

// What the command line requests. The callback of the selected command sets `run`, which Run()
// calls once the whole command line has been parsed. It returns the exit code.
struct Invocation {
  std::function<int()> run;
  std::vector<FileOption> files;  // of all commands
};

// Does what the command line says and returns the exit code of the process. Takes over the standard
// streams and SIGXFSZ, so it is for main() alone.
int Run(int argc, char **argv);

// Adds one command to `app`: a subcommand with its options, whose callback sets invocation.run.
// Both arguments outlive the call. A new command is declared here and listed in run.cc.
using AddCommand = void (*)(CLI::App &app, Invocation &invocation);

void AddCompile(CLI::App &app, Invocation &invocation);
void AddDecompile(CLI::App &app, Invocation &invocation);
void AddDump(CLI::App &app, Invocation &invocation);
void AddCheck(CLI::App &app, Invocation &invocation);
void AddSeal(CLI::App &app, Invocation &invocation);
void AddPlay(CLI::App &app, Invocation &invocation);
void AddExplain(CLI::App &app, Invocation &invocation);
void AddDownload(CLI::App &app, Invocation &invocation);
void AddStatus(CLI::App &app, Invocation &invocation);
void AddProbe(CLI::App &app, Invocation &invocation);
void AddRewrite(CLI::App &app, Invocation &invocation);

// Adds an option of `command` for an input or an output file, and returns it. `name` has CLI11's
// syntax; a positional one ("IN.tvb") is required. `path` outlives the invocation.
CLI::Option *AddInput(CLI::App &command, Invocation &invocation, const std::string &name,
                      std::string &path, const std::string &description);
CLI::Option *AddInputs(CLI::App &command, Invocation &invocation, const std::string &name,
                       std::vector<std::string> &paths, const std::string &description);
CLI::Option *AddOutput(CLI::App &command, Invocation &invocation, const std::string &name,
                       std::string &path, const std::string &description);

// Throws Failure if an output file of the given command is also one of its input files or another
// of its output files, under whatever name, or if two of its files are standard input or output.
// Pipes, terminals and devices such as /dev/null can be shared and are exempt.
void RefuseClashes(const Invocation &invocation);

// Adds --device: the folder of the framework's attributes, empty if it is to be found.
void AddDevice(CLI::App &command, std::string &folder);

// Adds --log: the kernel log as a file, empty for the kernel's own.
void AddKernelLog(CLI::App &command, std::string &path);

// Adds --pin-ns: the duration of a pin call, a real number of nanoseconds from 0 to 1e9.
void AddPinTime(CLI::App &command, double &nanoseconds);

}  // namespace tool
