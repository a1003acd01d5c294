// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Measures `tvb compile` as a whole process: megabytes of SVF a second and the most memory that it
// held, on made-up files of growing size. The memory is the process's resident set, mapped pages of
// the file included.
//
//   compile_bench TVB [MEGABYTES]...      (10 25 50 100 where none is given)
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

extern char **environ;

namespace {

constexpr size_t kMegabyte = 1000000;

[[noreturn]] void Die(const std::string &what) {
  perror(what.c_str());
  exit(2);
}

// An SVF file as a vendor's tool writes it: row after row is programmed, waited for and read back.
class SvfWriter {
 public:
  explicit SvfWriter(const std::string &path) : file_(fopen(path.c_str(), "w")) {
    if (file_ == nullptr) {
      Die(path);
    }
    Put("! made up\nTRST OFF;\nENDIR IDLE;\nENDDR IDLE;\nSTATE RESET;\nFREQUENCY 1E6 HZ;\n");
  }
  ~SvfWriter() {
    fclose(file_);
  }
  size_t size() const {
    return size_;
  }

  void Row(unsigned row, unsigned bits) {
    const std::string data = Hex(bits);
    const std::string length = std::to_string(bits);
    Put("! row " + std::to_string(row) + "\n");
    Put("SIR 8 TDI (30);\nSDR 32 TDI (" + Hex(32) + ");\n");
    Put("SIR 8 TDI (31);\nSDR " + length + " TDI (" + data + ");\nRUNTEST IDLE 50 TCK;\n");
    Put("SIR 8 TDI (32);\nSDR " + length + " TDI (" + std::string(bits / 4, '0') + ")\n    TDO (" +
        data + ")\n    MASK (" + std::string(bits / 4, 'F') + ");\n");
  }

 private:
  void Put(const std::string &text) {
    fputs(text.c_str(), file_);
    size_ += text.size();
  }

  // Lines of 64 digits, a quarter of which are of a blank row.
  std::string Hex(unsigned bits) {
    std::string text;
    for (unsigned digit = 0; digit < bits / 4; ++digit) {
      if (digit % 64 == 0 && digit > 0) {
        text += "\n        ";
      }
      text += digit / 64 % 4 == 3 ? 'F' : "0123456789ABCDEF"[random_() >> 28];
    }
    return text;
  }

  FILE *file_;
  size_t size_ = 0;
  std::mt19937 random_{1};
};

void MakeFile(const std::string &path, size_t size) {
  SvfWriter writer(path);
  for (unsigned row = 0; writer.size() < size; ++row) {
    writer.Row(row, 2048);
  }
}

struct Measured {
  double seconds;
  double processor;  // seconds of it
  long kilobytes;
};

double Seconds(const timeval &time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

Measured Run(const std::vector<std::string> &arguments) {
  std::vector<char *> argv;
  for (const std::string &argument : arguments) {
    argv.push_back(const_cast<char *>(argument.c_str()));
  }
  argv.push_back(nullptr);
  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  if (posix_spawn(&child, argv[0], nullptr, nullptr, argv.data(), environ) != 0) {
    Die(arguments[0]);
  }
  int status = 0;
  rusage usage = {};
  if (wait4(child, &status, 0, &usage) != child || status != 0) {
    fprintf(stderr, "%s failed\n", arguments[0].c_str());
    exit(1);
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  return {taken.count(), Seconds(usage.ru_utime) + Seconds(usage.ru_stime), usage.ru_maxrss};
}

double Megabytes(const std::string &path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    Die(path);
  }
  return static_cast<double>(status.st_size) / kMegabyte;
}

void Print(const std::string &mode, double svf, const std::string &tvb, const Measured &measured) {
  printf("%8.1f  %-14s %8.2f  %9.2f  %8.1f  %9.1f  %10.1f\n", svf, mode.c_str(), measured.seconds,
         measured.processor, svf / measured.seconds, Megabytes(tvb),
         static_cast<double>(measured.kilobytes) / 1024);
  fflush(stdout);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: %s TVB [MEGABYTES]...\n", argv[0]);
    return 2;
  }
  std::vector<size_t> sizes;
  for (int i = 2; i < argc; ++i) {
    sizes.push_back(strtoul(argv[i], nullptr, 10));
  }
  if (sizes.empty()) {
    sizes = {10, 25, 50, 100};
  }
  char directory[] = "/tmp/compile_bench.XXXXXX";
  if (mkdtemp(directory) == nullptr) {
    Die(directory);
  }
  const std::string svf = std::string(directory) + "/in.svf";
  const std::string tvb = std::string(directory) + "/out.tvb";
  printf("  SVF MB  blocks          seconds  processor      MB/s     TVB MB  peak MiB\n");
  for (size_t size : sizes) {
    MakeFile(svf, size * kMegabyte);
    const double megabytes = Megabytes(svf);
    Print("raw", megabytes, tvb,
          Run({argv[1], "compile", "-q", "--encoding", "raw", svf, "-o", tvb}));
    Print("no mode byte", megabytes, tvb,
          Run({argv[1], "compile", "-q", "--no-compress", svf, "-o", tvb}));
    Print("smallest", megabytes, tvb, Run({argv[1], "compile", "-q", svf, "-o", tvb}));
  }
  unlink(svf.c_str());
  unlink(tvb.c_str());
  rmdir(directory);
  return 0;
}
