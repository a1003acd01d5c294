// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "config.h"
#include "text.h"

namespace {

using sim::Scanner;
using sim::Word;

struct Form {
  const char *name;
  unsigned numbers;  // that follow the name: none, =FIRST, or =FIRST:SECOND
};

constexpr Form kForms[SIM_FAULT_KIND_COUNT] = {
    {"tdo-stuck-0", 0}, {"tdo-stuck-1", 0}, {"flip", 2}, {"dead-row", 2}, {"missing", 1},
};

sim_fault_kind KindOf(const Word &word) {
  unsigned kind = 0;
  while (kind < SIM_FAULT_KIND_COUNT && !word.Is(kForms[kind].name)) {
    ++kind;
  }
  return static_cast<sim_fault_kind>(kind);
}

bool ReadFault(Scanner &scanner, sim_fault &fault) {
  const Word word = scanner.TakeWord();
  fault = sim_fault{KindOf(word), 0, 0};
  if (fault.kind == SIM_FAULT_KIND_COUNT) {
    return scanner.Fail(word.position, word.length == 0 ? "a fault is expected" : "unknown fault");
  }
  const unsigned numbers = kForms[fault.kind].numbers;
  if (numbers >= 1 &&
      (!scanner.Expect('=', "'=' is expected") || !scanner.TakeNumber(fault.first))) {
    return false;
  }
  return numbers < 2 ||
         (scanner.Expect(':', "':' is expected") && scanner.TakeNumber(fault.second));
}

// Appends to a text that is cut to its size but counts on.
class Writer {
 public:
  Writer(char *text, sim_size size) : text_(text), size_(size) {}

  void Put(char c) {
    if (length_ + 1 < size_) {
      text_[length_] = c;
    }
    ++length_;
  }

  void Put(const char *string) {
    for (; *string != '\0'; ++string) {
      Put(*string);
    }
  }

  void Put(sim_u32 number) {
    sim_u32 scale = 1;
    while (number / scale >= 10) {
      scale *= 10;
    }
    for (; scale != 0; scale /= 10) {
      Put(static_cast<char>('0' + number / scale % 10));
    }
  }

  sim_size Finish() {
    if (size_ != 0) {
      text_[length_ < size_ ? length_ : size_ - 1] = '\0';
    }
    return length_;
  }

 private:
  char *text_;
  sim_size size_;
  sim_size length_ = 0;
};

bool IsKind(sim_fault_kind kind) {
  return static_cast<unsigned>(kind) < SIM_FAULT_KIND_COUNT;
}

}  // namespace

extern "C" {

const char *sim_fault_name(enum sim_fault_kind kind) {
  return IsKind(kind) ? kForms[kind].name : "?";
}

enum sim_fault_kind sim_fault_kind_of(const char *name) {
  sim_size length = 0;
  while (name[length] != '\0') {
    ++length;
  }
  return KindOf(Word{name, length, 0});
}

int sim_faults_parse(const char *text, struct sim_fault *faults, sim_u32 capacity, sim_u32 *count,
                     struct sim_text_error *error) {
  Scanner scanner(text, error);
  sim_u32 found = 0;
  for (bool more = !scanner.AtEnd(); more; more = scanner.Accept(';')) {
    sim_fault fault;
    if (!ReadFault(scanner, fault)) {
      return -1;
    }
    if (found < capacity) {
      faults[found] = fault;
    }
    ++found;
  }
  if (!scanner.AtEnd()) {
    scanner.Fail(scanner.Position(), "';' is expected");
    return -1;
  }
  *count = found;
  return 0;
}

sim_size sim_fault_format(const struct sim_fault *fault, char *text, sim_size size) {
  Writer writer(text, size);
  writer.Put(sim_fault_name(fault->kind));
  const unsigned numbers = IsKind(fault->kind) ? kForms[fault->kind].numbers : 0;
  if (numbers >= 1) {
    writer.Put('=');
    writer.Put(fault->first);
  }
  if (numbers >= 2) {
    writer.Put(':');
    writer.Put(fault->second);
  }
  return writer.Finish();
}
}
