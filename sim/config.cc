// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The words that describe a chain, and the chain of a text.
#include "config.h"

#include "scanner.h"

namespace {

int IsNotZero(sim_u32 value) {
  return value != 0;
}

int IsRegisterLength(sim_u32 value) {
  return value >= 2 && value <= 32;
}

constexpr sim_field_number kNone = SIM_FIELD_COUNT;

#define SIM_OFFSET(member) __builtin_offsetof(sim_device_config, member)
#define SIM_IR_RULE "an instruction register has 2 to 32 bits"
#define SIM_SIZE_RULE "rows and bits are at least 1"
#define SIM_TEXT_OF(number) #number
#define SIM_TEXT(macro) SIM_TEXT_OF(macro)
#define SIM_SIZE_ADVICE "; leave \"part\" out for a device without a part"

}  // namespace

extern "C" {

constexpr struct sim_field sim_fields[SIM_FIELD_COUNT] = {
    {"idcode", SIM_IN_DEVICE, SIM_NUMBER, SIM_OFFSET(idcode), 0, IsNotZero, "an IDCODE is not 0",
     "an IDCODE is not 0; leave it out for a device without one", kNone, nullptr},
    {"instruction", SIM_IN_DEVICE, SIM_NUMBER, SIM_OFFSET(idcode_instruction), SIM_IDCODE_6,
     IsNotZero, "an instruction is not 0",
     "the instruction that selects the IDCODE is not 0; leave it out for 6", SIM_FIELD_IDCODE,
     "instruction= needs idcode="},
    {"ir", SIM_IN_DEVICE, SIM_NUMBER, SIM_OFFSET(ir_bits), 8, IsRegisterLength, SIM_IR_RULE,
     SIM_IR_RULE, kNone, nullptr},
    {"bypass-code", SIM_IN_DEVICE, SIM_NUMBER, SIM_OFFSET(bypass_code), 0, IsNotZero,
     "a code of BYPASS is not 0",
     "a code of BYPASS is not 0; leave it out where all ones is the only one", kNone, nullptr},
    {"rows", SIM_SIZE_OF_PART, SIM_NUMBER, SIM_OFFSET(rows), 0, IsNotZero, SIM_SIZE_RULE,
     SIM_SIZE_RULE SIM_SIZE_ADVICE, kNone, nullptr},
    {"bits", SIM_SIZE_OF_PART, SIM_NUMBER, SIM_OFFSET(row_bits), 0, IsNotZero, SIM_SIZE_RULE,
     SIM_SIZE_RULE SIM_SIZE_ADVICE, kNone, nullptr},
    {"erase", SIM_IN_PART, SIM_NUMBER, SIM_OFFSET(erase_clocks), 100, nullptr, nullptr, nullptr,
     kNone, "erase= needs part="},
    {"program", SIM_IN_PART, SIM_NUMBER, SIM_OFFSET(program_clocks), 20, nullptr, nullptr, nullptr,
     kNone, "program= needs part="},
    {"blank", SIM_IN_PART, SIM_FLAG, SIM_OFFSET(blank), 0, nullptr, nullptr, nullptr, kNone,
     "blank needs part="},
};

constexpr const char *sim_fault_number_names[SIM_FAULT_NUMBER_COUNT] = {"",       "scan", "bit",
                                                                        "device", "row",  "clock"};

// clang-format off
constexpr struct sim_fault_form sim_fault_forms[SIM_FAULT_KIND_COUNT] = {
    {"tdo-stuck-0", {SIM_NO_NUMBER,     SIM_NO_NUMBER},  SIM_FAULT_TDO_STUCK_1},
    {"tdo-stuck-1", {SIM_NO_NUMBER,     SIM_NO_NUMBER},  SIM_FAULT_TDO_STUCK_0},
    {"flip",        {SIM_SCAN_NUMBER,   SIM_BIT_NUMBER}, SIM_FAULT_FLIP},
    {"dead-row",    {SIM_DEVICE_NUMBER, SIM_ROW_NUMBER}, SIM_FAULT_DEAD_ROW},
    {"missing",     {SIM_DEVICE_NUMBER, SIM_NO_NUMBER},  SIM_FAULT_MISSING},
    {"power-lost",  {SIM_CLOCK_NUMBER,  SIM_NO_NUMBER},  SIM_FAULT_POWER_LOST},
};
// clang-format on

static_assert(sim_fields[SIM_FIELD_COUNT - 1].name != nullptr, "a field has no row");
static_assert(sim_fault_forms[SIM_FAULT_KIND_COUNT - 1].name != nullptr, "a fault has no row");
static_assert(sim_fault_number_names[SIM_FAULT_NUMBER_COUNT - 1] != nullptr,
              "a number has no name");

constexpr const char *sim_instruction_wrong =
    "the IDCODE's instruction must fit into the instruction register and not be BYPASS, all ones";

int sim_instruction_fits(const struct sim_device_config *device) {
  return device->idcode == 0 ||
         device->idcode_instruction < (static_cast<sim_u64>(1) << device->ir_bits) - 1;
}

constexpr const char *sim_bypass_wrong =
    "the code of BYPASS must fit into the instruction register and not be the IDCODE's instruction";

int sim_bypass_fits(const struct sim_device_config *device) {
  return device->bypass_code < static_cast<sim_u64>(1) << device->ir_bits &&
         (device->idcode == 0 || device->bypass_code != device->idcode_instruction);
}

constexpr const char *sim_part_too_large =
    "rows times bits are at most " SIM_TEXT(SIM_MAX_PART_BITS);

int sim_part_fits(const struct sim_device_config *device) {
  return static_cast<sim_u64>(device->rows) * device->row_bits <= SIM_MAX_PART_BITS;
}

int sim_field_allows(const struct sim_field *field, sim_u32 value) {
  return field->allows == nullptr || field->allows(value) != 0;
}

sim_u32 sim_field_value(const struct sim_field *field, const struct sim_device_config *device) {
  sim_u32 value;
  __builtin_memcpy(&value, reinterpret_cast<const char *>(device) + field->offset, sizeof(value));
  return value;
}

void sim_field_set(const struct sim_field *field, struct sim_device_config *device, sim_u32 value) {
  __builtin_memcpy(reinterpret_cast<char *>(device) + field->offset, &value, sizeof(value));
}
}

namespace {

using sim::Scanner;
using sim::Word;

// The words of a device: its fields but for the size of a part, which one word gives as a whole.
constexpr sim_u32 kPart = SIM_FIELD_COUNT;
constexpr sim_u32 kBypass = SIM_FIELD_COUNT + 1;
constexpr sim_u32 kWordCount = SIM_FIELD_COUNT + 2;

constexpr const char *kEqualsExpected = "'=' is expected";

sim_u32 WordNumber(const Word &word) {
  for (sim_u32 number = 0; number < SIM_FIELD_COUNT; ++number) {
    if (sim_fields[number].place != SIM_SIZE_OF_PART && word.Is(sim_fields[number].name)) {
      return number;
    }
  }
  if (word.Is(SIM_PART_NAME)) {
    return kPart;
  }
  return word.Is("bypass") ? kBypass : kWordCount;
}

// What one device's text has given so far.
struct Given {
  bool word[kWordCount];
  sim_size position[kWordCount];
  sim_u32 count;
};

bool Note(Scanner &scanner, const Word &word, sim_u32 number, Given &given) {
  if (number == kWordCount) {
    return scanner.Fail(word.position, word.length == 0 ? "a field is expected" : "unknown field");
  }
  if (given.word[number]) {
    return scanner.Fail(word.position, "the field is given twice");
  }
  if (given.word[kBypass] || (number == kBypass && given.count != 0)) {
    return scanner.Fail(word.position, "bypass stands by itself");
  }
  given.word[number] = true;
  given.position[number] = word.position;
  ++given.count;
  return true;
}

bool ReadNumber(Scanner &scanner, const sim_field &field, sim_device_config &device) {
  sim_u32 value = 0;
  const bool read = scanner.TakeNumber(value);
  sim_field_set(&field, &device, value);
  return read;
}

// The rule of a field whose value stands at `position`.
bool Check(Scanner &scanner, sim_size position, const sim_field &field,
           const sim_device_config &device) {
  return sim_field_allows(&field, sim_field_value(&field, &device)) ||
         scanner.Fail(position, field.wrong);
}

bool ReadSize(Scanner &scanner, sim_device_config &device) {
  const sim_field &rows = sim_fields[SIM_FIELD_ROWS];
  const sim_field &bits = sim_fields[SIM_FIELD_BITS];
  const sim_size position = scanner.Position();
  return ReadNumber(scanner, rows, device) &&
         scanner.Expect('x', "'x' is expected between rows and bits") &&
         ReadNumber(scanner, bits, device) && Check(scanner, position, rows, device) &&
         Check(scanner, position, bits, device) &&
         (sim_part_fits(&device) || scanner.Fail(position, sim_part_too_large));
}

bool ReadField(Scanner &scanner, const sim_field &field, sim_device_config &device) {
  if (field.kind == SIM_FLAG) {
    sim_field_set(&field, &device, 1);
    return true;
  }
  if (!scanner.Expect('=', kEqualsExpected)) {
    return false;
  }
  const sim_size position = scanner.Position();
  return ReadNumber(scanner, field, device) && Check(scanner, position, field, device);
}

bool ReadWord(Scanner &scanner, sim_u32 number, sim_device_config &device) {
  if (number == kPart) {
    return scanner.Expect('=', kEqualsExpected) && ReadSize(scanner, device);
  }
  return number == kBypass || ReadField(scanner, sim_fields[number], device);
}

// What each field needs, and the values of those that are left out.
bool Complete(Scanner &scanner, const Given &given, sim_device_config &device) {
  for (sim_u32 number = 0; number < SIM_FIELD_COUNT; ++number) {
    const sim_field &field = sim_fields[number];
    const bool has_place = field.place == SIM_IN_DEVICE || given.word[kPart];
    const bool has_needs = field.needs == SIM_FIELD_COUNT || given.word[field.needs];
    if (given.word[number] && !(has_place && has_needs)) {
      return scanner.Fail(given.position[number], field.lacking);
    }
    if (!given.word[number] && has_place && field.place != SIM_SIZE_OF_PART) {
      sim_field_set(&field, &device, field.absent);
    }
  }
  return true;
}

bool ReadDevice(Scanner &scanner, sim_device_config &device) {
  device = sim_device_config{};
  Given given = {};
  do {
    const Word word = scanner.TakeWord();
    const sim_u32 number = WordNumber(word);
    if (!Note(scanner, word, number, given) || !ReadWord(scanner, number, device)) {
      return false;
    }
  } while (scanner.Accept(','));
  const sim_field_number place =
      given.word[SIM_FIELD_INSTRUCTION] ? SIM_FIELD_INSTRUCTION : SIM_FIELD_IDCODE;
  return Complete(scanner, given, device) &&
         (sim_instruction_fits(&device) ||
          scanner.Fail(given.position[place], sim_instruction_wrong)) &&
         (sim_bypass_fits(&device) ||
          scanner.Fail(given.position[SIM_FIELD_BYPASS], sim_bypass_wrong));
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
