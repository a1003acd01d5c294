// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/mismatch.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/cli/text.h"
#include "tvb/player.h"

namespace tool {
namespace {

// The fewest reads that allow a conclusion about the line.
constexpr uint64_t kFewReads = 8;

constexpr size_t kRowBits = 128;
constexpr size_t kMaxRows = 8;

constexpr size_t kIdcodeBits = 32;
constexpr uint32_t kNoManufacturer = 0x7F;  // reserved: no device has it

uint32_t ManufacturerOf(uint32_t idcode) {
  return idcode >> 1 & 0x7FF;
}

uint32_t PartOf(uint32_t idcode) {
  return idcode >> 12 & 0xFFFF;
}

uint32_t RevisionOf(uint32_t idcode) {
  return idcode >> 28;
}

bool CanBe(uint32_t idcode) {
  return (idcode & 1) != 0 && ManufacturerOf(idcode) != kNoManufacturer;
}

// 32 bits of a row as a number; bit `first` is the lowest.
uint32_t WordAt(const BitRow &row, size_t first) {
  uint32_t word = 0;
  for (size_t bit = 0; bit < kIdcodeBits; ++bit) {
    word |= static_cast<uint32_t>(row[first + bit]) << bit;
  }
  return word;
}

// The common level of all `count` reads, `ones` of which were 1, if there are enough of them.
std::optional<bool> OneLevel(uint64_t count, uint64_t ones) {
  if (count < kFewReads || (ones != 0 && ones != count)) {
    return std::nullopt;
  }
  return ones != 0;
}

// The line is not stuck if the rest of the scan, which the driver does not read, differs.
void FindStuckLevel(const LineCounts &counts, Mismatch &mismatch) {
  const uint64_t compared = mismatch.mask.Ones();
  const uint64_t ones = (mismatch.read & mismatch.mask).Ones();
  mismatch.reads = counts.all_reads();
  mismatch.stuck_in_scan = OneLevel(compared, ones);
  if (ones == 0 || ones == compared) {
    mismatch.stuck_always = OneLevel(mismatch.reads, counts.reads[1]);
  }
}

void SetRecord(const FileScan &scan, Mismatch &mismatch) {
  const tvb::PlayedRecord &played = scan.played;
  mismatch.scan = scan.number;
  mismatch.record = played.record.index;
  mismatch.offset = played.record.offset;
  mismatch.loop = played.loop;
  mismatch.pass = played.pass;
  mismatch.passes = played.passes;
  mismatch.which = played.record.opcode == tvb::kSir ? ScanKind::kIr : ScanKind::kDr;
  mismatch.header = scan.header;
  mismatch.trailer = scan.trailer;
}

std::string LevelText(const Mismatch &mismatch) {
  return fmt::format("expected {}, read {}", int(mismatch.expected[mismatch.bit]),
                     int(mismatch.read[mismatch.bit]));
}

std::string RegisterText(const Mismatch &mismatch) {
  std::string text = fmt::format("  register  {}, {}", NameOf(mismatch.which),
                                 CountText(mismatch.mask.size(), "bit"));
  if (mismatch.header != 0) {
    text += fmt::format(", after {} of header", CountText(mismatch.header, "bit"));
  }
  if (mismatch.trailer != 0) {
    text += fmt::format(", before {} of trailer", CountText(mismatch.trailer, "bit"));
  }
  return text + '\n';
}

std::string LoopText(const Mismatch &mismatch) {
  return mismatch.loop == 0
             ? ""
             : fmt::format("  loop      pass {} of {} of the loop of record {}\n",
                           NumberText(mismatch.pass), NumberText(mismatch.passes), mismatch.loop);
}

// The three values of a mismatch as shown: only the bits under the mask.
struct Shown {
  BitRow expected;
  BitRow read;
  BitRow differs;
};

std::string RowText(const Mismatch &mismatch, const Shown &shown, size_t first) {
  const size_t count = std::min(kRowBits, mismatch.mask.size() - first);
  std::string text;
  if (mismatch.mask.size() > kRowBits) {
    text = fmt::format("  bits {} to {}\n", first, first + count - 1);
  }
  return text + fmt::format("  expected  {}\n  read      {}\n  mask      {}\n  differs   {}\n",
                            shown.expected.Hex(first, count), shown.read.Hex(first, count),
                            mismatch.mask.Hex(first, count), shown.differs.Hex(first, count));
}

bool Differs(const Shown &shown, size_t first) {
  const std::string digits =
      shown.differs.Hex(first, std::min(kRowBits, shown.differs.size() - first));
  return digits.find_first_not_of('0') != std::string::npos;
}

// A scan of few rows is shown whole, a longer one by the first rows that differ.
std::string ValueText(const Mismatch &mismatch) {
  const BitRow expected = mismatch.expected & mismatch.mask;
  const BitRow read = mismatch.read & mismatch.mask;
  const Shown shown = {expected, read, expected ^ read};
  const bool whole = mismatch.mask.size() <= kRowBits * kMaxRows;
  std::string text;
  size_t rows = 0;
  for (size_t first = 0; first < mismatch.mask.size(); first += kRowBits) {
    if (whole || Differs(shown, first)) {
      text += rows++ < kMaxRows ? RowText(mismatch, shown, first) : "";
    }
  }
  if (rows > kMaxRows) {
    text += fmt::format("  and {} more rows of {} bits that differ\n", rows - kMaxRows, kRowBits);
  }
  return text + fmt::format("  {} of {} compared differ\n", NumberText(shown.differs.Ones()),
                            CountText(mismatch.mask.Ones(), "bit"));
}

std::string StuckText(const Mismatch &mismatch) {
  if (mismatch.stuck_always) {
    return fmt::format("  TDO stuck at {}: all {} reads so far were {}\n",
                       int(*mismatch.stuck_always), NumberText(mismatch.reads),
                       int(*mismatch.stuck_always));
  }
  if (mismatch.stuck_in_scan) {
    return fmt::format("  TDO stuck at {}: every bit that this scan compares reads {}\n",
                       int(*mismatch.stuck_in_scan), int(*mismatch.stuck_in_scan));
  }
  return "";
}

std::string IdcodeText(const Mismatch &mismatch) {
  const std::optional<size_t> first = FindIdcode(mismatch.expected, mismatch.mask);
  if (!mismatch.identifies || !first || mismatch.stuck_in_scan) {
    return "";
  }
  const uint32_t expected = WordAt(mismatch.expected, *first);
  const uint32_t read = WordAt(mismatch.read, *first);
  return fmt::format("  {}\n", DescribeIdcodes(expected, read));
}

}  // namespace

std::optional<StoppedScan> FinishScan(const Lines &lines, const Playhead &playhead,
                                      Target &target) {
  const LineScan &scan = lines.scan();
  const BitRow tdo = lines.ScanTdo();
  const std::optional<uint32_t> bit =
      scan.of_file == nullptr ? std::nullopt : scan.of_file->OwnBit(tdo.size());
  if (!bit) {
    return std::nullopt;
  }
  StoppedScan stopped;
  stopped.bit = *bit;
  for (uint32_t i = 0; i < *bit; ++i) {
    stopped.read.Push(tdo[scan.of_file->header + i]);
  }
  const uint32_t bits = scan.of_file->bits();
  const tvb::Buffer tdi = playhead.Data(tvb::kTagTdi);
  ShiftOn(target, tdi.empty() ? BitRow(bits, false) : BitRow::FromFile(tdi, bits), stopped.read);
  return stopped;
}

Mismatch MakeMismatch(const StoppedScan &stopped, const Lines &lines, const Playhead &playhead) {
  const FileScan &scan = *lines.scan().of_file;
  Mismatch mismatch;
  SetRecord(scan, mismatch);
  mismatch.bit = stopped.bit;
  mismatch.read = stopped.read;
  for (uint32_t i = 0; i < scan.bits(); ++i) {
    mismatch.expected.Push(scan.Expected(i));
    mismatch.mask.Push(scan.Compares(i));
  }
  FindStuckLevel(lines.counts(), mismatch);
  mismatch.identifies = mismatch.which == ScanKind::kDr && (playhead.compared_dr_scans() == 1 ||
                                                            SelectsIdcode(playhead.instruction()));
  return mismatch;
}

std::string MismatchSentence(const Mismatch &mismatch) {
  return fmt::format("the comparison failed in {} scan {}, bit {}: {}", NameOf(mismatch.which),
                     mismatch.scan, mismatch.bit, LevelText(mismatch));
}

std::string MismatchSentence(const Mismatch &mismatch, const SourcePlace &source) {
  const std::string reg = source.reg == source.statement
                              ? fmt::format("this {}", source.reg)
                              : fmt::format("the {} of this {}", source.reg, source.statement);
  return fmt::format("the comparison failed in {}, bit {}: {}", reg, source.bit,
                     LevelText(mismatch));
}

std::string SourceDetail(const Mismatch &mismatch, const std::string &statement,
                         const std::string &record) {
  return (statement.empty() ? "" : fmt::format("  statement {}\n", statement)) +
         fmt::format("  record    {}: {} scan {}, bit {}\n", record, NameOf(mismatch.which),
                     mismatch.scan, mismatch.bit);
}

std::string MismatchDetail(const Mismatch &mismatch) {
  return RegisterText(mismatch) + LoopText(mismatch) + ValueText(mismatch) + StuckText(mismatch) +
         IdcodeText(mismatch);
}

std::optional<size_t> FindIdcode(const BitRow &expected, const BitRow &mask) {
  if (mask.Ones() != kIdcodeBits) {
    return std::nullopt;
  }
  size_t first = 0;
  while (!mask[first]) {
    ++first;
  }
  if (first + kIdcodeBits > mask.size() || WordAt(mask, first) != 0xFFFFFFFF ||
      !CanBe(WordAt(expected, first))) {
    return std::nullopt;
  }
  return first;
}

bool SelectsIdcode(const tvb::Buffer &instructions) {
  return std::any_of(instructions.begin(), instructions.end(), [](uint8_t byte) {
    return byte == tvb::InstructionByte(tvb::kIdcode) ||
           byte == tvb::InstructionByte(tvb::kOtherIdcode);
  });
}

std::string DescribeIdcodes(uint32_t expected, uint32_t read) {
  if (PartOf(expected) == PartOf(read) && ManufacturerOf(expected) == ManufacturerOf(read) &&
      CanBe(read)) {
    return fmt::format(
        "this looks like an IDCODE: it is the right part (0x{:07X}) in revision {} where the file "
        "wants revision {}",
        expected & 0x0FFFFFFF, RevisionOf(read), RevisionOf(expected));
  }
  if (!CanBe(read)) {
    return fmt::format("this looks like an IDCODE, but 0x{:08X}, which was read, cannot be one",
                       read);
  }
  return fmt::format(
      "this looks like an IDCODE: it is another part, manufacturer 0x{:03X} part 0x{:04X} where "
      "the file wants manufacturer 0x{:03X} part 0x{:04X}",
      ManufacturerOf(read), PartOf(read), ManufacturerOf(expected), PartOf(expected));
}

}  // namespace tool
