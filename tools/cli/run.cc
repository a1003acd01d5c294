// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads the command line of tvb and runs its command.
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <sstream>
#include <string>

#include "tools/cli/command.h"
#include "tools/cli/report.h"

namespace {

// In the order of `tvb --help`.
constexpr tool::AddCommand kCommands[] = {
    tool::AddCompile, tool::AddDecompile, tool::AddDump,    tool::AddCheck,
    tool::AddSeal,    tool::AddPlay,      tool::AddExplain, tool::AddDownload,
    tool::AddStatus,  tool::AddProbe,     tool::AddRewrite,
};

const CLI::App *Find(const CLI::App &app, const std::string &name) {
  const auto found =
      app.get_subcommands([&name](const CLI::App *command) { return command->check_name(name); });
  return found.empty() ? nullptr : found.front();
}

std::string NoCommand(const std::string &name) {
  return fmt::format("there is no command '{}'", name);
}

void AddHelp(CLI::App &app, tool::Invocation &invocation) {
  auto *help = app.add_subcommand("help", "Show what a command does and its options");
  auto topic = std::make_shared<std::string>();
  help->add_option("COMMAND", *topic, "Command to show");
  help->callback([&app, &invocation, topic] {
    const CLI::App *about = topic->empty() ? &app : Find(app, *topic);
    if (about == nullptr) {
      throw CLI::ValidationError(NoCommand(*topic));
    }
    invocation.run = [&app, about] {
      const std::string name = about == &app ? "tvb" : fmt::format("tvb {}", about->get_name());
      const auto mode = CLI::AppFormatMode::Normal;
      fputs(about->get_formatter()->make_help(about, name, mode).c_str(), stdout);
      return tool::kDone;
    };
  });
}

// Says what is wrong with the command line and where the help for it is.
std::string Explain(const CLI::App &app, const CLI::ParseError &error) {
  const auto selected = app.get_subcommands();
  const auto unknown = app.remaining();
  const bool no_command = selected.empty() && !unknown.empty() && unknown.front()[0] != '-';
  const std::string wrong = no_command ? NoCommand(unknown.front()) : error.what();
  return selected.empty() || selected.front()->get_name() == "help"
             ? fmt::format("{}; see tvb --help", wrong)
             : fmt::format("{}; see tvb {} --help", wrong, selected.front()->get_name());
}

// Returns -1 if the command line is valid and asks for more than a text.
int ReadCommandLine(CLI::App &app, const tool::Invocation &invocation, int argc, char **argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &asked) {
    std::ostringstream text;
    const int code = app.exit(asked, text, text);
    fputs(text.str().c_str(), stdout);
    return code;
  } catch (const CLI::ParseError &error) {
    tool::Error("", Explain(app, error));
    return tool::kBad;
  }
  if (!invocation.run) {
    tool::Error("", "name a command; see tvb --help");
    return tool::kBad;
  }
  return -1;
}

int RunCommand(const tool::Invocation &invocation) {
  try {
    tool::RefuseClashes(invocation);
    return invocation.run();
  } catch (const tool::Failure &failure) {
    tool::Error(failure.place(), failure.what());
    return failure.code();
  } catch (const std::bad_alloc &) {
    tool::Error("", "out of memory");
  } catch (const std::exception &error) {
    tool::Error("", error.what());
  }
  return tool::kBad;
}

// Output that cannot be written makes the command fail.
int FlushOutput(int code) {
  errno = 0;
  if (fflush(stdout) == 0 && !ferror(stdout)) {
    return code;
  }
  tool::Error("", fmt::format("cannot write <stdout>: {}", strerror(errno != 0 ? errno : EIO)));
  return tool::kBad;
}

// Keeps files from taking the descriptor of a standard stream that was closed: reading or writing
// that stream still fails.
void OccupyStandardStreams() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) < 0) {
      open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

}  // namespace

int tool::Run(int argc, char **argv) {
  OccupyStandardStreams();
  std::signal(SIGXFSZ, SIG_IGN);  // so that write() fails when a file grows too large
  CLI::App app("Makes, lists, checks and rehearses TVB command files.", "tvb");
  Invocation invocation;
  app.set_version_flag("--version", "tvb " TVB_VERSION);
  app.require_subcommand(0, 1);
  for (AddCommand add : kCommands) {
    add(app, invocation);
  }
  AddHelp(app, invocation);
  const int code = ReadCommandLine(app, invocation, argc, argv);
  return FlushOutput(code >= 0 ? code : RunCommand(invocation));
}
