// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "config.h"

#include "text.h"

namespace {

using sim::Scanner;
using sim::Word;

constexpr sim_u32 kEraseClocks = 100;
constexpr sim_u32 kProgramClocks = 20;

bool ReadIdcode(Scanner &scanner, sim_device_config &device) {
  const sim_size position = scanner.Position();
  return scanner.TakeNumber(device.idcode) &&
         (device.idcode != 0 || scanner.Fail(position, "an IDCODE is not 0"));
}

bool ReadInstruction(Scanner &scanner, sim_device_config &device) {
  const sim_size position = scanner.Position();
  if (!scanner.TakeNumber(device.idcode_instruction)) {
    return false;
  }
  return device.idcode_instruction == SIM_IDCODE_6 || device.idcode_instruction == SIM_IDCODE_224 ||
         scanner.Fail(position, "the instruction is 6 or 224");
}

bool ReadPart(Scanner &scanner, sim_device_config &device) {
  const sim_size position = scanner.Position();
  if (!scanner.TakeNumber(device.rows) ||
      !scanner.Expect('x', "'x' is expected between rows and bits") ||
      !scanner.TakeNumber(device.row_bits)) {
    return false;
  }
  return (device.rows != 0 && device.row_bits != 0) ||
         scanner.Fail(position, "rows and bits are at least 1");
}

bool ReadErase(Scanner &scanner, sim_device_config &device) {
  return scanner.TakeNumber(device.erase_clocks);
}

bool ReadProgram(Scanner &scanner, sim_device_config &device) {
  return scanner.TakeNumber(device.program_clocks);
}

enum FieldNumber { kBypass, kIdcode, kInstruction, kPart, kErase, kProgram, kBlank, kFieldCount };

struct Field {
  const char *name;
  bool (*read)(Scanner &scanner, sim_device_config &device);  // null: a word without a value
  FieldNumber needs;                                          // itself: none
  const char *needs_reason;
};

constexpr Field kFields[kFieldCount] = {
    {"bypass", nullptr, kBypass, ""},
    {"idcode", ReadIdcode, kIdcode, ""},
    {"instruction", ReadInstruction, kIdcode, "instruction= needs idcode="},
    {"part", ReadPart, kPart, ""},
    {"erase", ReadErase, kPart, "erase= needs part="},
    {"program", ReadProgram, kPart, "program= needs part="},
    {"blank", nullptr, kPart, "blank needs part="},
};

// What one device's text has given so far.
struct Given {
  bool field[kFieldCount];
  sim_size position[kFieldCount];
  sim_u32 count;
};

sim_u32 FieldOf(const Word &word) {
  sim_u32 number = 0;
  while (number < kFieldCount && !word.Is(kFields[number].name)) {
    ++number;
  }
  return number;
}

bool Note(Scanner &scanner, const Word &word, sim_u32 number, Given &given) {
  if (number == kFieldCount) {
    return scanner.Fail(word.position, word.length == 0 ? "a field is expected" : "unknown field");
  }
  if (given.field[number]) {
    return scanner.Fail(word.position, "the field is given twice");
  }
  if (given.field[kBypass] || (number == kBypass && given.count != 0)) {
    return scanner.Fail(word.position, "bypass stands by itself");
  }
  given.field[number] = true;
  given.position[number] = word.position;
  ++given.count;
  return true;
}

bool ReadField(Scanner &scanner, Given &given, sim_device_config &device) {
  const Word word = scanner.TakeWord();
  const sim_u32 number = FieldOf(word);
  if (!Note(scanner, word, number, given)) {
    return false;
  }
  const Field &field = kFields[number];
  if (field.read == nullptr) {
    device.blank = number == kBlank ? 1 : device.blank;
    return true;
  }
  return scanner.Expect('=', "'=' is expected") && field.read(scanner, device);
}

bool CheckNeeds(Scanner &scanner, const Given &given) {
  for (sim_u32 number = 0; number < kFieldCount; ++number) {
    if (given.field[number] && !given.field[kFields[number].needs]) {
      return scanner.Fail(given.position[number], kFields[number].needs_reason);
    }
  }
  return true;
}

bool ReadDevice(Scanner &scanner, sim_device_config &device) {
  device = sim_device_config{};
  device.idcode_instruction = SIM_IDCODE_6;
  Given given = {};
  do {
    if (!ReadField(scanner, given, device)) {
      return false;
    }
  } while (scanner.Accept(','));
  if (given.field[kPart]) {
    device.erase_clocks = given.field[kErase] ? device.erase_clocks : kEraseClocks;
    device.program_clocks = given.field[kProgram] ? device.program_clocks : kProgramClocks;
  }
  return CheckNeeds(scanner, given);
}

}  // namespace

extern "C" int sim_config_parse(const char *text, struct sim_device_config *devices,
                                sim_u32 capacity, sim_u32 *count, struct sim_text_error *error) {
  Scanner scanner(text, error);
  sim_u32 found = 0;
  do {
    sim_device_config device;
    if (!ReadDevice(scanner, device)) {
      return -1;
    }
    if (found < capacity) {
      devices[found] = device;
    }
    ++found;
  } while (scanner.Accept(';'));
  if (!scanner.AtEnd()) {
    scanner.Fail(scanner.Position(), "',' or ';' is expected");
    return -1;
  }
  *count = found;
  return 0;
}
