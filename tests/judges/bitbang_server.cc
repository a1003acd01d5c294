// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// bitbang_server CHAIN.json SCANS MEMORY
//
// Lets a JTAG player of another make play to a simulated chain, over the remote_bitbang protocol:
// every byte from the client is a command,
//   '0' to '7'     drive the lines: 4 * TCK + 2 * TMS + TDI
//   'R'            answer '0' or '1', the level of TDO
//   'r' 's' 't' 'u'   reset lines off, SRST on, TRST on, both on
//   'B' 'b'        a light on and off: ignored
//   'Q'            the end
// The chain has no reset lines; SRST going on begins the list of scans anew, so that a client can
// leave out what it does on its own account before.
//
// Listens on a port of the loopback interface that the system chooses and prints its number. When
// the client has left, writes the scans that the chain saw to SCANS and the configuration memory to
// MEMORY, in the formats of `tvb play` (a scan's number is its place in the list).
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "tools/rehearse/lines.h"
#include "tools/rehearse/scan.h"
#include "tools/rehearse/target_chain.h"

namespace {

using tool::Line;

void Check(bool good, const char *what) {
  if (!good) {
    throw std::runtime_error(std::string(what) + " failed");
  }
}

// Lists scans by their place in the list.
class ScanList {
 public:
  void Add(const tool::LineScan &scan, const char *end = "\n") {
    text_ += tool::ScanText(++count_, scan) + end;
  }

  void Clear() {
    text_.clear();
    count_ = 0;
  }

  // The list; `last` is the last scan on the lines, which may not have been left.
  std::string Finish(const tool::LineScan &last) {
    if (last.open) {
      Add(last, " stopped\n");
    }
    return text_;
  }

 private:
  std::string text_;
  uint64_t count_ = 0;
};

// The chain with what lists its scans.
class Board {
 public:
  explicit Board(const tool::ChainDescription &description, const std::string &name)
      : chain_(description, name), lines_(clock_, 0) {
    lines_.Connect(chain_);
    lines_.WatchScans([this](const tool::LineScan &scan) { scans_.Add(scan); });
  }

  // Carries out a command; false: it is the end. What the client is to read is put into `answers`.
  bool Do(char command, std::string &answers) {
    if (command >= '0' && command <= '7') {
      Drive(command - '0');
    } else if (command == 'R') {
      answers += lines_.Read() ? '1' : '0';
    } else if (command == 's') {
      scans_.Clear();
    }
    return command != 'Q';
  }

  std::string Scans() {
    return scans_.Finish(lines_.scan());
  }
  std::string Memory() {
    return chain_.Memory();
  }

 private:
  // TMS and TDI are at their levels when TCK rises.
  void Drive(int levels) {
    lines_.Write(Line::kTms, (levels & 2) != 0);
    lines_.Write(Line::kTdi, (levels & 1) != 0);
    lines_.Write(Line::kTck, (levels & 4) != 0);
  }

  tool::BoardClock clock_;
  tool::ChainTarget chain_;
  tool::Lines lines_;
  ScanList scans_;
};

int Listen() {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  Check(listener >= 0, "socket");
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  sockaddr *const generic = reinterpret_cast<sockaddr *>(&address);
  Check(bind(listener, generic, size) == 0, "bind");
  Check(listen(listener, 1) == 0, "listen");
  Check(getsockname(listener, generic, &size) == 0, "getsockname");
  std::printf("%d\n", ntohs(address.sin_port));
  std::fflush(stdout);
  return listener;
}

int Accept() {
  const int listener = Listen();
  const int client = accept(listener, nullptr, nullptr);
  Check(client >= 0, "accept");
  close(listener);
  const int on = 1;
  setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return client;
}

// Reads whatever the client has sent, also while it has not fetched its answers: it may send long
// before it reads, and would wait for ever.
void Serve(int client, Board &board) {
  std::string answers;
  for (bool open = true; open || !answers.empty();) {
    pollfd state = {client,
                    static_cast<short>((open ? POLLIN : 0) | (answers.empty() ? 0 : POLLOUT)), 0};
    Check(poll(&state, 1, -1) == 1, "poll");
    if ((state.revents & (POLLIN | POLLHUP)) != 0 && open) {
      char commands[1 << 16];
      const ssize_t count = recv(client, commands, sizeof commands, MSG_DONTWAIT);
      open = count > 0;
      for (ssize_t i = 0; i < count && open; ++i) {
        open = board.Do(commands[i], answers);
      }
    }
    if ((state.revents & POLLOUT) != 0) {
      const ssize_t sent =
          send(client, answers.data(), answers.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
      answers.erase(0, sent > 0 ? static_cast<size_t>(sent) : answers.size());
    }
    if ((state.revents & POLLERR) != 0) {
      break;
    }
  }
  close(client);
}

void WriteFile(const std::string &path, const std::string &text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  Check(file.good(), "writing");
}

void Run(const std::string &chain_path, const std::string &scans, const std::string &memory) {
  std::ifstream file(chain_path, std::ios::binary);
  const std::string json{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  Board board(tool::ParseChain(json, chain_path), chain_path);
  Serve(Accept(), board);
  WriteFile(scans, board.Scans());
  WriteFile(memory, board.Memory());
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: bitbang_server CHAIN.json SCANS MEMORY\n");
    return 2;
  }
  try {
    Run(argv[1], argv[2], argv[3]);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "bitbang_server: %s\n", error.what());
    return 1;
  }
  return 0;
}
