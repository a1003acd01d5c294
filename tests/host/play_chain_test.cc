// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tools/cli/command.h"
#include "tools/rehearse/target_chain.h"

namespace {

using testing::HasSubstr;
using tool::ChainDescription;
using tool::ChainTarget;
using tool::ParseChain;

TEST(PlayChain, ReadsDevicesAndFaults) {
  const ChainDescription chain = ParseChain(
      R"({"devices": [{"idcode": "0x0A014C35", "instruction": 224},
                      {"idcode": 5, "part": {"rows": 4, "bits": 33, "program": 7, "blank": true}},
                      {}],
          "faults": [{"kind": "flip", "scan": 3, "bit": 9}, {"kind": "dead-row", "device": 2,
                      "row": 1}, {"kind": "missing", "device": 1}, {"kind": "tdo-stuck-1"}]})",
      "c");
  ASSERT_EQ(chain.devices.size(), 3u);
  EXPECT_EQ(chain.devices[0].idcode, 0x0A014C35u);
  EXPECT_EQ(chain.devices[0].idcode_instruction, 224u);
  EXPECT_EQ(chain.devices[0].rows, 0u);
  EXPECT_EQ(chain.devices[1].idcode, 5u);
  EXPECT_EQ(chain.devices[1].idcode_instruction, 6u);
  EXPECT_EQ(chain.devices[1].rows, 4u);
  EXPECT_EQ(chain.devices[1].row_bits, 33u);
  EXPECT_EQ(chain.devices[1].erase_clocks, 100u);
  EXPECT_EQ(chain.devices[1].program_clocks, 7u);
  EXPECT_EQ(chain.devices[1].blank, 1u);
  EXPECT_EQ(chain.devices[2].idcode, 0u);
  ASSERT_EQ(chain.faults.size(), 4u);
  EXPECT_EQ(chain.faults[0].kind, SIM_FAULT_FLIP);
  EXPECT_EQ(chain.faults[0].first, 3u);
  EXPECT_EQ(chain.faults[0].second, 9u);
  EXPECT_EQ(chain.faults[1].kind, SIM_FAULT_DEAD_ROW);
  EXPECT_EQ(chain.faults[2].first, 1u);
  EXPECT_EQ(chain.faults[3].kind, SIM_FAULT_TDO_STUCK_1);
}

struct Wrong {
  const char *json;
  const char *place;
  const char *message;
};

class PlayChainErrors : public ::testing::TestWithParam<Wrong> {};

TEST_P(PlayChainErrors, NameThePlace) {
  try {
    ChainTarget target(ParseChain(GetParam().json, "c"), "c");
    FAIL() << "accepted";
  } catch (const tool::Failure &failure) {
    EXPECT_EQ(failure.place(), GetParam().place);
    EXPECT_THAT(failure.what(), HasSubstr(GetParam().message));
    EXPECT_EQ(failure.code(), tool::kBad);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, PlayChainErrors,
    testing::Values(
        Wrong{"", "c:1:1", "no JSON"}, Wrong{"{\n \"devices\": [,]}", "c:2:14", "no JSON"},
        Wrong{"[]", "c", "an object"}, Wrong{"{}", "c", "a member \"devices\""},
        Wrong{R"({"devices": 3})", "c: /devices", "an array"},
        Wrong{R"({"devices": [3]})", "c: /devices/0", "an object"},
        Wrong{R"({"devices": [{}, {"idcodes": 3}]})", "c: /devices/1",
              "no member \"idcodes\" here; these may be given: \"idcode\", \"instruction\", "
              "\"ir\", \"bypass-code\", \"part\""},
        Wrong{R"({"devices": [{"idcode": 0}]})", "c: /devices/0/idcode", "is not 0"},
        Wrong{R"({"devices": [{"idcode": -1}]})", "c: /devices/0/idcode", "a number from 0"},
        Wrong{R"({"devices": [{"idcode": 4294967296}]})", "c: /devices/0/idcode", "4294967295"},
        Wrong{R"({"devices": [{"idcode": "1234"}]})", "c: /devices/0/idcode", "hexadecimal"},
        Wrong{R"({"devices": [{"idcode": "0x123456789"}]})", "c: /devices/0/idcode", "1 to 8"},
        Wrong{R"({"devices": [{"idcode": 1, "instruction": 0}]})", "c: /devices/0/instruction",
              "is not 0; leave it out for 6"},
        Wrong{R"({"devices": [{"idcode": 1, "ir": 5, "instruction": 31}]})",
              "c: /devices/0/instruction", "not be BYPASS"},
        Wrong{R"({"devices": [{"idcode": 1, "ir": 2}]})", "c: /devices/0", "must fit into"},
        Wrong{R"({"devices": [{"ir": 4, "bypass-code": 16}]})", "c: /devices/0/bypass-code",
              "must fit into"},
        Wrong{R"({"devices": [{"bypass-code": 0}]})", "c: /devices/0/bypass-code",
              "is not 0; leave it out"},
        Wrong{R"({"devices": [{"ir": 33}]})", "c: /devices/0/ir", "2 to 32 bits"},
        Wrong{R"({"devices": [{"instruction": 224}]})", "c: /devices/0/instruction",
              "this needs a member \"idcode\" beside it"},
        Wrong{R"({"devices": [{"part": {"row": 3}}]})", "c: /devices/0/part",
              "given: \"rows\", \"bits\", \"erase\", \"program\", \"blank\""},
        Wrong{R"({"devices": [{"part": {"rows": 3}}]})", "c: /devices/0/part", "\"bits\""},
        Wrong{R"({"devices": [{"part": {"rows": 3, "bits": 0}}]})", "c: /devices/0/part",
              "at least 1"},
        Wrong{R"({"devices": [{"part": {"rows": 3, "bits": 1, "blank": 1}}]})",
              "c: /devices/0/part/blank", "true or false"},
        Wrong{R"({"devices": [{"part": {"rows": 4294967295, "bits": 4294967295}}]})",
              "c: /devices/0/part", "rows times bits are at most 268435456"},
        Wrong{R"({"devices": [{}, {"part": {"rows": 2, "bits": 134217729}}]})",
              "c: /devices/1/part", "rows times bits are at most 268435456"},
        Wrong{R"({"devices": [{"part": {"rows": 268435456, "bits": 1}},
                              {"part": {"rows": 268435456, "bits": 1}},
                              {"part": {"rows": 268435456, "bits": 1}},
                              {"part": {"rows": 268435456, "bits": 1}}]})",
              "c: /devices", "more memory"},
        Wrong{R"({"devices": [{}], "faults": [{"kind": 1}]})", "c: /faults/0/kind", "a string"},
        Wrong{R"({"devices": [{}], "faults": [{"kind": "stuck"}]})", "c: /faults/0/kind",
              "this must be one of \"tdo-stuck-0\", \"tdo-stuck-1\", \"flip\", \"dead-row\", "
              "\"missing\", \"power-lost\""},
        Wrong{R"({"devices": [{}], "faults": [{"kind": "missing", "device": 1, "row": 2}]})",
              "c: /faults/0", "no member \"row\" here; these may be given: \"kind\", \"device\""},
        Wrong{R"({"devices": [{}], "faults": [{"kind": "flip", "clocks": 1}]})", "c: /faults/0",
              "these may be given: \"kind\", \"scan\", \"bit\", \"device\", \"row\", \"clock\""},
        Wrong{R"({"devices": [{}], "faults": [{"kind": "missing"}]})", "c: /faults/0",
              "\"device\""},
        Wrong{R"({"devices": [{}], "faults": [{"kind": "missing", "device": 2}]})", "c: /faults/0",
              "no such device"}));

// Each kind of fault says the same in a file as in a module parameter.
TEST(PlayChain, FaultsAreThoseOfTheParameter) {
  for (unsigned kind = 0; kind < SIM_FAULT_KIND_COUNT; ++kind) {
    const sim_fault_form &form = sim_fault_forms[kind];
    std::string json = std::string(R"({"kind": ")") + form.name + '"';
    std::string text = form.name;
    for (unsigned which = 0; which < 2 && form.numbers[which] != SIM_NO_NUMBER; ++which) {
      const std::string number = std::to_string(which + 1);
      json += std::string(", \"") + sim_fault_number_names[form.numbers[which]] + "\": " + number;
      text += (which == 0 ? '=' : ':') + number;
    }
    const ChainDescription chain = ParseChain(R"({"devices": [], "faults": [)" + json + "}]}", "c");
    sim_fault fault = {};
    sim_u32 count = 0;
    sim_text_error error = {};
    ASSERT_EQ(sim_faults_parse(text.c_str(), &fault, 1, &count, &error), 0) << text;
    ASSERT_EQ(chain.faults.size(), 1u);
    EXPECT_EQ(chain.faults[0].kind, fault.kind) << text;
    EXPECT_EQ(chain.faults[0].kind, kind);
    EXPECT_EQ(chain.faults[0].first, fault.first) << text;
    EXPECT_EQ(chain.faults[0].second, fault.second) << text;
  }
}

void ExpectSameDevice(const char *json, const char *text) {
  const ChainDescription chain = ParseChain(json, "c");
  sim_device_config device = {};
  sim_u32 count = 0;
  sim_text_error error = {};
  ASSERT_EQ(sim_config_parse(text, &device, 1, &count, &error), 0) << text;
  for (const sim_field &field : sim_fields) {
    EXPECT_EQ(sim_field_value(&field, &chain.devices[0]), sim_field_value(&field, &device))
        << text << ": " << field.name;
  }
}

TEST(PlayChain, DevicesAreThoseOfTheParameter) {
  ExpectSameDevice(R"({"devices": [{}]})", "bypass");
  ExpectSameDevice(R"({"devices": [{"idcode": 7}]})", "idcode=7");
  ExpectSameDevice(R"({"devices": [{"part": {"rows": 2, "bits": 3}}]})", "part=2x3");
  ExpectSameDevice(R"({"devices": [{"ir": 10, "idcode": 7, "instruction": "0x3C6"}]})",
                   "ir=10,idcode=7,instruction=0x3C6");
  ExpectSameDevice(R"({"devices": [{"idcode": "0x15", "instruction": 224, "part": {"rows": 2,
                      "bits": 3, "erase": 4, "program": 5, "blank": true}}]})",
                   "idcode=0x15,instruction=224,part=2x3,erase=4,program=5,blank");
}

TEST(PlayChain, ShowsItsMemory) {
  ChainTarget target(ParseChain(R"({"devices": [{}, {"part": {"rows": 2, "bits": 9, "blank": true}},
                                 {"part": {"rows": 1, "bits": 4}}]})",
                                "c"),
                     "c");
  EXPECT_EQ(target.Memory(), "2 0 1FF\n2 1 1FF\n3 0 0\n");
}

}  // namespace
