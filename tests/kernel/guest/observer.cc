// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Looks at the test machine from a process of its own, until SIGTERM ends it:
//   observer heartbeat      sleeps for ten milliseconds again and again; prints the longest time
//                           from one beat to the next, in whole milliseconds
//   observer changes FILE   prints what an attribute says, and again whenever poll() tells that it
//                           has changed
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <string_view>

namespace {

using Clock = std::chrono::steady_clock;

volatile std::sig_atomic_t ended;

extern "C" void End(int) {
  ended = 1;
}

// Without SA_RESTART: a wait ends.
void EndBySignal() {
  struct sigaction action = {};
  action.sa_handler = End;
  sigaction(SIGTERM, &action, nullptr);
}

void Heartbeat() {
  const timespec pause = {0, 10'000'000};
  Clock::duration longest = {};
  Clock::time_point beat = Clock::now();
  while (!ended) {
    clock_nanosleep(CLOCK_MONOTONIC, 0, &pause, nullptr);
    const Clock::time_point next = Clock::now();
    longest = std::max(longest, next - beat);
    beat = next;
  }
  const auto ms = std::chrono::ceil<std::chrono::milliseconds>(longest);
  std::printf("%lld\n", static_cast<long long>(ms.count()));
}

// Returns whether the attribute could be read.
bool Changes(const char *path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  char text[4096];
  while (!ended) {
    const ssize_t length = pread(file, text, sizeof(text), 0);
    if (length < 0) {
      return false;
    }
    fwrite(text, 1, static_cast<size_t>(length), stdout);
    fflush(stdout);
    pollfd change = {file, POLLPRI, 0};
    poll(&change, 1, -1);
  }
  return true;
}

}  // namespace

int main(int argc, char **argv) {
  EndBySignal();
  if (argc == 2 && std::string_view(argv[1]) == "heartbeat") {
    Heartbeat();
    return 0;
  }
  if (argc == 3 && std::string_view(argv[1]) == "changes") {
    return Changes(argv[2]) ? 0 : 1;
  }
  std::fprintf(stderr, "usage: observer heartbeat | observer changes FILE\n");
  return 2;
}
