// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Chains as text.
#include <gtest/gtest.h>

#include "sim_probe.h"

namespace {

// The devices of a good text.
std::vector<sim_device_config> Devices(const std::string &text) {
  std::vector<sim_device_config> devices(16);
  sim_u32 count = 0;
  sim_text_error error = {};
  EXPECT_EQ(sim_config_parse(text.c_str(), devices.data(), 16, &count, &error), 0)
      << text << " at " << error.position << ": " << (error.reason ? error.reason : "");
  EXPECT_LE(count, 16u);
  devices.resize(count);
  return devices;
}

void ExpectDevice(const sim_device_config &device, const sim_device_config &expected) {
  EXPECT_EQ(device.idcode, expected.idcode);
  EXPECT_EQ(device.idcode_instruction, expected.idcode_instruction);
  EXPECT_EQ(device.rows, expected.rows);
  EXPECT_EQ(device.row_bits, expected.row_bits);
  EXPECT_EQ(device.erase_clocks, expected.erase_clocks);
  EXPECT_EQ(device.program_clocks, expected.program_clocks);
  EXPECT_EQ(device.blank, expected.blank);
  EXPECT_EQ(device.ir_bits, expected.ir_bits);
  EXPECT_EQ(device.bypass_code, expected.bypass_code);
}

TEST(SimConfig, OneOfEach) {
  const auto devices = Devices(
      "idcode=0x0A014C35,part=64x128,erase=1000,program=50;bypass;idcode=0x13,instruction=224");
  ASSERT_EQ(devices.size(), 3u);
  ExpectDevice(devices[0], {0x0A014C35, 6, 64, 128, 1000, 50, 0, 8, 0});
  ExpectDevice(devices[1], {0, 6, 0, 0, 0, 0, 0, 8, 0});
  ExpectDevice(devices[2], {0x13, 224, 0, 0, 0, 0, 0, 8, 0});
}

TEST(SimConfig, AnyInstructionRegister) {
  const auto devices =
      Devices("ir=2;idcode=1,ir=10,instruction=0x3C6;ir=32,idcode=1,instruction=4294967294");
  ASSERT_EQ(devices.size(), 3u);
  ExpectDevice(devices[0], {0, 6, 0, 0, 0, 0, 0, 2, 0});
  ExpectDevice(devices[1], {1, 0x3C6, 0, 0, 0, 0, 0, 10, 0});
  ExpectDevice(devices[2], {1, 0xFFFFFFFE, 0, 0, 0, 0, 0, 32, 0});
}

TEST(SimConfig, ACodeOfBypass) {
  const auto devices = Devices("bypass-code=0xC7;ir=2,bypass-code=3,idcode=1,instruction=2");
  ASSERT_EQ(devices.size(), 2u);
  ExpectDevice(devices[0], {0, 6, 0, 0, 0, 0, 0, 8, 0xC7});
  ExpectDevice(devices[1], {1, 2, 0, 0, 0, 0, 0, 2, 3});
}

TEST(SimConfig, DefaultsOfAPart) {
  const auto devices = Devices("part=1x1");
  ASSERT_EQ(devices.size(), 1u);
  ExpectDevice(devices[0], {0, 6, 1, 1, 100, 20, 0, 8, 0});
}

TEST(SimConfig, FieldsInAnyOrderWithBlanksBetween) {
  const auto devices = Devices(
      " blank ,\tprogram = 0, instruction=0xE0,erase=0 , part = 0x10 x 0X20, idcode=4294967295 \n; "
      "bypass ");
  ASSERT_EQ(devices.size(), 2u);
  ExpectDevice(devices[0], {0xFFFFFFFF, 224, 16, 32, 0, 0, 1, 8, 0});
}

TEST(SimConfig, CountsBeyondTheCapacity) {
  sim_device_config devices[2] = {};
  devices[1].idcode = 0xABCD;
  sim_u32 count = 0;
  sim_text_error error = {};
  EXPECT_EQ(sim_config_parse("idcode=1;idcode=3;idcode=5", devices, 1, &count, &error), 0);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(devices[0].idcode, 1u);
  EXPECT_EQ(devices[1].idcode, 0xABCDu);
}

struct BadText {
  const char *text;
  size_t position;
  const char *reason;
};

constexpr const char *kInstructionWrong =
    "the IDCODE's instruction must fit into the instruction register and not be BYPASS, all ones";

constexpr const char *kBypassWrong =
    "the code of BYPASS must fit into the instruction register and not be the IDCODE's instruction";

constexpr BadText kBad[] = {
    {"", 0, "a field is expected"},
    {"  ", 2, "a field is expected"},
    {"bypass;", 7, "a field is expected"},
    {"bypass;;bypass", 7, "a field is expected"},
    {"idcode=1,", 9, "a field is expected"},
    {"idcode=1;device", 9, "unknown field"},
    {"id=1", 0, "unknown field"},
    {"IDCODE=1", 0, "unknown field"},
    {"idcode", 6, "'=' is expected"},
    {"idcode:1", 6, "'=' is expected"},
    {"idcode=", 7, "a number is expected"},
    {"idcode=x1", 7, "a number is expected"},
    {"idcode=0", 7, "an IDCODE is not 0"},
    {"idcode= 0x100000000", 8, "the number is larger than 32 bits"},
    {"idcode=99999999999999999999999", 7, "the number is larger than 32 bits"},
    {"idcode=12G", 9, "',' or ';' is expected"},
    {"idcode=1 part=1x1", 9, "',' or ';' is expected"},
    {"idcode=1,instruction=0", 21, "an instruction is not 0"},
    {"idcode=1,instruction=255", 9, kInstructionWrong},
    {"instruction=32,ir=5,idcode=1", 0, kInstructionWrong},
    {"ir=2,idcode=1", 5, kInstructionWrong},
    {"ir=1", 3, "an instruction register has 2 to 32 bits"},
    {"ir=33", 3, "an instruction register has 2 to 32 bits"},
    {"ir=4,bypass-code=16", 5, kBypassWrong},
    {"idcode=1,instruction=5,bypass-code=5", 23, kBypassWrong},
    {"bypass-code=0", 12, "a code of BYPASS is not 0"},
    {"bypass,ir=4", 7, "bypass stands by itself"},
    {"instruction=6", 0, "instruction= needs idcode="},
    {"bypass;part=1x1,instruction=6", 16, "instruction= needs idcode="},
    {"part=64", 7, "'x' is expected between rows and bits"},
    {"part=64:128", 7, "'x' is expected between rows and bits"},
    {"part=64x", 8, "a number is expected"},
    {"part=0x128", 10, "'x' is expected between rows and bits"},
    {"part=00x128", 5, "rows and bits are at least 1"},
    {"part=3x0", 5, "rows and bits are at least 1"},
    {"bypass;part= 100000000x1000", 13, "rows times bits are at most 268435456"},
    {"part=4294967295x4294967295", 5, "rows times bits are at most 268435456"},
    {"part=1x268435457", 5, "rows times bits are at most 268435456"},
    {"idcode=1,erase=5", 9, "erase= needs part="},
    {"program=5", 0, "program= needs part="},
    {"idcode=1,blank", 9, "blank needs part="},
    {"idcode=1,idcode=3", 9, "the field is given twice"},
    {"bypass,bypass", 7, "the field is given twice"},
    {"bypass,idcode=1", 7, "bypass stands by itself"},
    {"idcode=1,bypass", 9, "bypass stands by itself"},
    {"part=1x1,blank=1", 14, "',' or ';' is expected"},
};

TEST(SimConfig, ErrorsNameTheirPlace) {
  for (const BadText &test : kBad) {
    sim_u32 count = 77;
    sim_text_error error = {};
    EXPECT_EQ(sim_config_parse(test.text, nullptr, 0, &count, &error), -1) << test.text;
    EXPECT_EQ(error.position, test.position) << test.text;
    EXPECT_STREQ(error.reason, test.reason) << test.text;
    EXPECT_EQ(count, 77u) << test.text;
  }
}

TEST(SimConfig, TheTableHasTheWords) {
  std::string fields;
  for (const sim_field &field : sim_fields) {
    fields += std::string(field.name) + ' ';
  }
  EXPECT_EQ(fields, "idcode instruction ir bypass-code rows bits erase program blank ");
  std::string faults;
  for (const sim_fault_form &form : sim_fault_forms) {
    faults += std::string(form.name) + '(' + sim_fault_number_names[form.numbers[0]] + ' ' +
              sim_fault_number_names[form.numbers[1]] + ") ";
  }
  EXPECT_EQ(faults,
            "tdo-stuck-0( ) tdo-stuck-1( ) flip(scan bit) dead-row(device row) missing(device ) "
            "power-lost(clock ) ");
}

TEST(SimConfig, HostChainNamesTheError) {
  try {
    sim::Chain chain("bypass;nothing");
    FAIL() << "no error";
  } catch (const std::invalid_argument &error) {
    EXPECT_STREQ(error.what(), "bypass;nothing: at 7: unknown field");
  }
}

}  // namespace
