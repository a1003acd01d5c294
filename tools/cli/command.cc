// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/command.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>

namespace tool {
namespace {

constexpr double kMaxPinTime = 1e9;

// A file that was named.
struct NamedFile {
  std::string option;
  std::string path;
  bool output;
};

const char *StandardStream(const NamedFile &file) {
  return file.output ? "standard output" : "standard input";
}

// False if no file has that path yet.
bool GetStatus(const NamedFile &file, struct stat &status) {
  if (file.path == "-") {
    return fstat(file.output ? STDOUT_FILENO : STDIN_FILENO, &status) == 0;
  }
  return stat(file.path.c_str(), &status) == 0;
}

// A text that is equal for two options that name the same file; empty for what can be shared.
std::string Identity(const NamedFile &file) {
  struct stat status = {};
  if (GetStatus(file, status)) {
    return S_ISREG(status.st_mode) ? fmt::format("{}:{}", status.st_dev, status.st_ino) : "";
  }
  std::error_code ignored;
  const std::filesystem::path path = std::filesystem::absolute(file.path, ignored);
  return (std::filesystem::weakly_canonical(path.parent_path(), ignored) / path.filename())
      .string();
}

void RefuseClash(const NamedFile &file, const NamedFile &other) {
  if (file.path.empty() || other.path.empty()) {
    return;
  }
  if (file.path == "-" && other.path == "-" && file.output == other.output) {
    throw Failure(fmt::format("{} and {} cannot both be {}", file.option, other.option,
                              StandardStream(file)));
  }
  const std::string identity = Identity(file);
  if ((!file.output && !other.output) || identity.empty() || identity != Identity(other)) {
    return;
  }
  if (file.output && other.output) {
    throw Failure(
        fmt::format("{} and {} would write the same file; name two", file.option, other.option));
  }
  const NamedFile &output = file.output ? file : other;
  const NamedFile &input = file.output ? other : file;
  throw Failure(fmt::format(
      "{} would overwrite {}; name another file", output.option,
      input.path == "-" ? "the file on standard input" : fmt::format("the input {}", input.path)));
}

template <typename Path>
CLI::Option *AddFile(FileOption file, CLI::App &command, Invocation &invocation, Path &path,
                     const std::string &description) {
  CLI::Option *option = command.add_option(file.name, path, description);
  file.name = option->get_name();
  const bool positional = option->get_positional();
  option->required(positional)->type_name(positional ? "" : "FILE");
  invocation.files.push_back(std::move(file));
  return option;
}

std::function<std::vector<std::string>()> One(const std::string &path) {
  return [&path] { return std::vector<std::string>{path}; };
}

std::string CheckPinTime(const std::string &text) {
  double value = 0;
  return CLI::detail::lexical_cast(text, value) && value >= 0 && value <= kMaxPinTime
             ? ""
             : fmt::format("expected a number of nanoseconds from 0 to 1e9; found '{}'", text);
}

}  // namespace

CLI::Option *AddInput(CLI::App &command, Invocation &invocation, const std::string &name,
                      std::string &path, const std::string &description) {
  return AddFile({&command, name, One(path), false}, command, invocation, path, description);
}

CLI::Option *AddInputs(CLI::App &command, Invocation &invocation, const std::string &name,
                       std::vector<std::string> &paths, const std::string &description) {
  return AddFile({&command, name, [&paths] { return paths; }, false}, command, invocation, paths,
                 description);
}

CLI::Option *AddOutput(CLI::App &command, Invocation &invocation, const std::string &name,
                       std::string &path, const std::string &description) {
  return AddFile({&command, name, One(path), true}, command, invocation, path, description);
}

void RefuseClashes(const Invocation &invocation) {
  std::vector<NamedFile> named;
  for (const FileOption &option : invocation.files) {
    if (!option.command->parsed()) {
      continue;
    }
    for (const std::string &path : option.paths()) {
      const NamedFile file = {option.name, path, option.output};
      for (const NamedFile &other : named) {
        RefuseClash(other, file);
      }
      if (!path.empty()) {
        named.push_back(file);
      }
    }
  }
}

void AddDevice(CLI::App &command, std::string &folder) {
  command
      .add_option("--device", folder,
                  "The folder of the framework's attributes, if it is not to be found below "
                  "/sys/devices")
      ->type_name("DIR");
}

void AddKernelLog(CLI::App &command, std::string &path) {
  command.add_option("--log", path, "The kernel log, if it is not /dev/kmsg")->type_name("FILE");
}

void AddPinTime(CLI::App &command, double &nanoseconds) {
  command
      .add_option("--pin-ns", nanoseconds,
                  "Time that a pin call takes on the board, in nanoseconds, from 0 to 1e9; "
                  "decimals are allowed")
      ->check(CheckPinTime)
      ->type_name("NS")
      ->capture_default_str();
}

}  // namespace tool
