// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/scan_register.h"

#include <gtest/gtest.h>

#include <string>

#include "svf_bench.h"

namespace {

using Bytes = svf::RegisterBytes;

class SvfRegister : public testing::Test {
 protected:
  void Load(const std::string &text) {
    const svf::Statement statement = test::ParseOne(text);
    sdr_.Load(std::get<svf::ScanStatement>(statement.what));
  }
  std::string LoadError(const std::string &text) {
    return test::ErrorOf(text, [&] { Load(text); });
  }

  svf::ScanRegister sdr_;
};

TEST_F(SvfRegister, RemembersTdi) {
  Load("SDR 8 TDI (12);");
  Load("SDR 8;");
  EXPECT_EQ(sdr_.tdi(), (Bytes{0x48}));
  Load("SDR 8 TDI (01);");
  EXPECT_EQ(sdr_.tdi(), (Bytes{0x80}));
}

TEST_F(SvfRegister, WantsTdiAtFirstAndForANewLength) {
  EXPECT_EQ(LoadError("SDR 8 TDO (00);").substr(0, 20), "1:5: expected TDI: t");
  Load("SDR 8 TDI (12);");
  EXPECT_EQ(LoadError("SDR 9;").substr(0, 20), "1:5: expected TDI: t");
}

TEST_F(SvfRegister, ForgetsTdoAtOnce) {
  Load("SDR 8 TDI (12) TDO (34);");
  EXPECT_TRUE(sdr_.compares());
  EXPECT_EQ(sdr_.tdo(), (Bytes{0x2C}));
  Load("SDR 8;");
  EXPECT_FALSE(sdr_.compares());
}

TEST_F(SvfRegister, RemembersMasksThroughScansWithoutTdo) {
  Load("SDR 8 TDI (12) TDO (34) MASK (0F) SMASK (80);");
  Load("SDR 8 TDI (12);");
  Load("SDR 8 TDO (34);");
  EXPECT_EQ(sdr_.mask(), (Bytes{0xF0}));
  EXPECT_EQ(sdr_.smask(), (Bytes{0x01}));
  EXPECT_TRUE(sdr_.has_free_bits());
}

TEST_F(SvfRegister, TakesAMaskThatComesWithoutTdo) {
  Load("SDR 8 TDI (12) MASK (0F);");
  Load("SDR 8 TDO (34);");
  EXPECT_EQ(sdr_.mask(), (Bytes{0xF0}));
}

TEST_F(SvfRegister, StartsMasksAnewWithANewLength) {
  Load("SDR 8 TDI (12) TDO (34) MASK (0F) SMASK (0F);");
  Load("SDR 12 TDI (123) TDO (345);");
  EXPECT_EQ(sdr_.mask(), (Bytes{0xFF, 0xF0}));
  EXPECT_EQ(sdr_.smask(), (Bytes{0xFF, 0xF0}));
  EXPECT_FALSE(sdr_.has_free_bits());
  Load("SDR 8 TDI (12) TDO (34);");
  EXPECT_EQ(sdr_.mask(), (Bytes{0xFF}));
}

TEST_F(SvfRegister, KnowsAMaskOfAllOnes) {
  Load("SDR 12 TDI (123) SMASK (FFE);");
  EXPECT_TRUE(sdr_.has_free_bits());
  Load("SDR 12 SMASK (FFF);");
  EXPECT_FALSE(sdr_.has_free_bits());
}

TEST_F(SvfRegister, MayHaveNoBits) {
  Load("SDR 0;");
  EXPECT_EQ(sdr_.bits(), 0u);
  Load("SDR 8 TDI (12);");
  Load("SDR 0 TDI (0) TDO (0);");
  EXPECT_TRUE(sdr_.tdi().empty());
  EXPECT_NE(LoadError("SDR 8;"), "");
}

TEST_F(SvfRegister, NamesTheFieldThatDoesNotFit) {
  EXPECT_EQ(LoadError("SDR 4 TDI (0) SMASK (1F);"),
            "1:22: SMASK has a 1 beyond its 4 bits; correct the data or the length");
}

}  // namespace
