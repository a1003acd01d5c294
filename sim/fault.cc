// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The faults of a chain, and faults as text.
#include "chain.h"
#include "scanner.h"

namespace {

using sim::Scanner;
using sim::Word;

bool IsKind(sim_fault_kind kind) {
  return static_cast<unsigned>(kind) < SIM_FAULT_KIND_COUNT;
}

bool Has(sim_fault_kind kind, unsigned which) {
  return IsKind(kind) && sim_fault_forms[kind].numbers[which] != SIM_NO_NUMBER;
}

// Whether a fault may have that value as its number `which` of 0 and 1.
bool CanBe(const sim_chain &chain, const sim_fault &fault, unsigned which) {
  const sim_u32 value = which == 0 ? fault.first : fault.second;
  switch (sim_fault_forms[fault.kind].numbers[which]) {
    case SIM_SCAN_NUMBER:
    case SIM_CLOCK_NUMBER:
      return value != 0;
    case SIM_DEVICE_NUMBER:
      return chain.DeviceAt(value) != nullptr;
    case SIM_ROW_NUMBER:
      return value < chain.DeviceAt(fault.first)->config.rows;
    default:
      return true;
  }
}

sim_fault_kind KindOf(const Word &word) {
  unsigned kind = 0;
  while (kind < SIM_FAULT_KIND_COUNT && !word.Is(sim_fault_forms[kind].name)) {
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
  if (Has(fault.kind, 0) &&
      (!scanner.Expect('=', "'=' is expected") || !scanner.TakeNumber(fault.first))) {
    return false;
  }
  return !Has(fault.kind, 1) ||
         (scanner.Expect(':', "':' is expected") && scanner.TakeNumber(fault.second));
}

// Writes a text that is cut to its size, and counts the characters of the whole.
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

}  // namespace

extern "C" {

int sim_chain_set_fault(struct sim_chain *chain, const struct sim_fault *fault) {
  chain->Settle();
  if (!IsKind(fault->kind) || !CanBe(*chain, *fault, 0) || !CanBe(*chain, *fault, 1)) {
    return -1;
  }
  chain->faults[sim_fault_forms[fault->kind].excludes].set = false;
  chain->faults[fault->kind] = sim::Fault{
      true, Has(fault->kind, 0) ? fault->first : 0, Has(fault->kind, 1) ? fault->second : 0,
      fault->kind == SIM_FAULT_POWER_LOST ? chain->rises : chain->dr_captures};
  chain->ApplyFaults();
  return 0;
}

void sim_chain_clear_faults(struct sim_chain *chain) {
  chain->Settle();
  __builtin_memset(chain->faults, 0, sizeof(chain->faults));
  chain->ApplyFaults();
}

int sim_chain_fault(const struct sim_chain *chain, enum sim_fault_kind kind,
                    struct sim_fault *fault) {
  if (!IsKind(kind) || !chain->faults[kind].set) {
    return 0;
  }
  *fault = sim_fault{kind, chain->faults[kind].first, chain->faults[kind].second};
  return 1;
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

const char *sim_fault_name(enum sim_fault_kind kind) {
  return IsKind(kind) ? sim_fault_forms[kind].name : "?";
}

enum sim_fault_kind sim_fault_kind_of(const char *name) {
  sim_size length = 0;
  while (name[length] != '\0') {
    ++length;
  }
  return KindOf(Word{name, length, 0});
}

sim_size sim_fault_format(const struct sim_fault *fault, char *text, sim_size size) {
  Writer writer(text, size);
  writer.Put(sim_fault_name(fault->kind));
  if (Has(fault->kind, 0)) {
    writer.Put('=');
    writer.Put(fault->first);
  }
  if (Has(fault->kind, 1)) {
    writer.Put(':');
    writer.Put(fault->second);
  }
  return writer.Finish();
}
}
