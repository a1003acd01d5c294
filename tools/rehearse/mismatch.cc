// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/mismatch.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/cli/text.h"
#include "tools/rehearse/idcode.h"

namespace tool {
namespace {

// Fewer reads of one level say nothing about the line.
constexpr uint64_t kFewReads = 8;

constexpr size_t kRowBits = 128;
constexpr size_t kMostRows = 8;

// What the driver would have read in the rest of the scan if it had gone on.
void ReadRest(Lines &lines, const tvb::Buffer &tdi, BitRow &read, size_t bits) {
  while (read.size() < bits) {
    lines.Write(Line::kTck, true);
    lines.Write(Line::kTck, false);
    const size_t bit = read.size();
    lines.Write(Line::kTdi, !tdi.empty() && (tdi[bit / 8] >> (7 - bit % 8) & 1));
    read.Push(lines.Read());
  }
}

BitRow ReadScan(Lines &lines, const Playhead &playhead, const TdoWatch &watch, uint32_t bit) {
  const FileScan &scan = *playhead.scan();
  BitRow read;
  for (uint32_t i = 0; i < bit; ++i) {
    read.Push(watch.scan()[scan.header + i]);
  }
  read.Push(watch.last());
  lines.DropWatchers();
  ReadRest(lines, playhead.Data(tvb::kTagTdi), read, scan.bits());
  return read;
}

// The level of all of `count` reads of which `ones` were 1, if there are enough of them.
std::optional<bool> OneLevel(uint64_t count, uint64_t ones) {
  if (count < kFewReads || (ones != 0 && ones != count)) {
    return std::nullopt;
  }
  return ones != 0;
}

// A line is not stuck where the rest of the scan, which the driver does not read, is otherwise.
void FindStuckLevel(const TdoWatch &watch, Mismatch &mismatch) {
  const uint64_t compared = mismatch.mask.Ones();
  const uint64_t ones = (mismatch.read & mismatch.mask).Ones();
  mismatch.reads = watch.reads(false) + watch.reads(true);
  mismatch.stuck_in_scan = OneLevel(compared, ones);
  if (ones == 0 || ones == compared) {
    mismatch.stuck_always = OneLevel(mismatch.reads, watch.reads(true));
  }
}

void Place(const FileScan &scan, Mismatch &mismatch) {
  const tvb::PlayedRecord &played = scan.played;
  mismatch.scan = scan.number;
  mismatch.record = played.record.index;
  mismatch.offset = played.record.offset;
  mismatch.loop = played.loop;
  mismatch.pass = played.pass;
  mismatch.passes = played.passes;
  mismatch.which = played.record.opcode == tvb::kSir ? Register::kIr : Register::kDr;
  mismatch.header = scan.header;
  mismatch.trailer = scan.trailer;
}

std::string RegisterLine(const Mismatch &mismatch) {
  std::string line = fmt::format("  register  {}, {}", NameOf(mismatch.which),
                                 CountText(mismatch.mask.size(), "bit"));
  if (mismatch.header != 0) {
    line += fmt::format(", after {} of header", CountText(mismatch.header, "bit"));
  }
  if (mismatch.trailer != 0) {
    line += fmt::format(", before {} of trailer", CountText(mismatch.trailer, "bit"));
  }
  return line + '\n';
}

std::string LoopLine(const Mismatch &mismatch) {
  return mismatch.loop == 0
             ? ""
             : fmt::format("  loop      pass {} of {} of the loop of record {}\n",
                           NumberText(mismatch.pass), NumberText(mismatch.passes), mismatch.loop);
}

// The three values of a mismatch as they are shown: only what the mask lets through.
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
  text += "  expected  " + shown.expected.Hex(first, count) + '\n';
  text += "  read      " + shown.read.Hex(first, count) + '\n';
  text += "  mask      " + mismatch.mask.Hex(first, count) + '\n';
  text += "  differs   " + shown.differs.Hex(first, count) + '\n';
  return text;
}

bool Differs(const Shown &shown, size_t first) {
  const std::string digits =
      shown.differs.Hex(first, std::min(kRowBits, shown.differs.size() - first));
  return digits.find_first_not_of('0') != std::string::npos;
}

// A scan of few rows is shown whole, of a longer one the first rows that differ.
std::string ValueText(const Mismatch &mismatch) {
  const BitRow expected = mismatch.expected & mismatch.mask;
  const BitRow read = mismatch.read & mismatch.mask;
  const Shown shown = {expected, read, expected ^ read};
  const bool whole = mismatch.mask.size() <= kRowBits * kMostRows;
  std::string text;
  size_t rows = 0;
  for (size_t first = 0; first < mismatch.mask.size(); first += kRowBits) {
    if (whole || Differs(shown, first)) {
      text += rows++ < kMostRows ? RowText(mismatch, shown, first) : "";
    }
  }
  if (rows > kMostRows) {
    text += fmt::format("  and {} more rows of {} bits that differ\n", rows - kMostRows, kRowBits);
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
  const std::optional<size_t> first = IdcodePlace(mismatch.expected, mismatch.mask);
  if (!mismatch.identifies || !first || mismatch.stuck_in_scan) {
    return "";
  }
  const uint32_t expected = WordAt(mismatch.expected, *first);
  const uint32_t read = WordAt(mismatch.read, *first);
  return "  " + DescribeIdcodes(expected, read) + '\n';
}

}  // namespace

void TdoWatch::Entered(TapState state) {
  if (state == TapState::kCaptureIr || state == TapState::kCaptureDr) {
    scan_.Clear();
  }
}

std::optional<Mismatch> FindMismatch(Lines &lines, const Playhead &playhead,
                                     const TdoWatch &watch) {
  const FileScan *scan = playhead.scan();
  const std::optional<uint32_t> bit =
      scan == nullptr ? std::nullopt : scan->OwnBit(lines.tap().bits());
  if (!bit || watch.scan().size() < scan->header + *bit) {
    return std::nullopt;
  }
  Mismatch mismatch;
  Place(*scan, mismatch);
  mismatch.bit = *bit;
  for (uint32_t i = 0; i < scan->bits(); ++i) {
    mismatch.expected.Push(scan->Expected(i));
    mismatch.mask.Push(scan->Compares(i));
  }
  mismatch.read = ReadScan(lines, playhead, watch, *bit);
  FindStuckLevel(watch, mismatch);
  mismatch.identifies = mismatch.which == Register::kDr && (playhead.compared_dr_scans() == 1 ||
                                                            SelectsIdcode(playhead.instruction()));
  return mismatch;
}

std::string MismatchSentence(const Mismatch &mismatch) {
  return fmt::format("the comparison failed in {} scan {}, bit {}: expected {}, read {}",
                     NameOf(mismatch.which), mismatch.scan, mismatch.bit,
                     int(mismatch.expected[mismatch.bit]), int(mismatch.read[mismatch.bit]));
}

std::string MismatchDetail(const Mismatch &mismatch) {
  return RegisterLine(mismatch) + LoopLine(mismatch) + ValueText(mismatch) + StuckText(mismatch) +
         IdcodeText(mismatch);
}

}  // namespace tool
