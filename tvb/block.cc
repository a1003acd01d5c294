// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/block.h"

#include <utility>

#include "tvb/bit_coding.h"
#include "tvb/error.h"
#include "tvb/lzw.h"
#include "tvb/nibble.h"
#include "tvb/run_length.h"

namespace tvb {
namespace {

Buffer StartBlock(Encoding encoding) {
  return {static_cast<uint8_t>(encoding)};
}

Buffer LzwBlock(Bytes data, int k) {
  Buffer block = StartBlock(Encoding::kLzw);
  AppendLzw(block, data, k);
  return block;
}

void KeepSmaller(Buffer &best, Buffer candidate) {
  if (candidate.size() < best.size()) {
    best = std::move(candidate);
  }
}

Buffer SmallestLzwBlock(Bytes data) {
  Buffer best = LzwBlock(data, 0);
  for (int k = 1; k <= kLargestLzwDictionary; ++k) {
    KeepSmaller(best, LzwBlock(data, k));
  }
  return best;
}

Buffer BlockAs(Bytes data, Encoding encoding) {
  if (encoding == Encoding::kLzw) {
    return SmallestLzwBlock(data);
  }
  Buffer block = StartBlock(encoding);
  switch (encoding) {
    case Encoding::kRunLength:
      AppendRunLength(block, data, BestEscapeByte(data));
      break;
    case Encoding::kNibble:
      AppendNibble(block, data, ShortestNibblePattern(data));
      break;
    case Encoding::kBitCoding:
      AppendBitCoding(block, data, BestSymbol(data));
      break;
    default:
      Append(block, data);
  }
  return block;
}

Buffer SmallestBlock(Bytes data) {
  Buffer best = BlockAs(data, Encoding::kRaw);
  for (Encoding encoding :
       {Encoding::kRunLength, Encoding::kNibble, Encoding::kBitCoding, Encoding::kLzw}) {
    KeepSmaller(best, BlockAs(data, encoding));
  }
  return best;
}

}  // namespace

Buffer EncodeBlock(Bytes data, const BlockChoice &choice) {
  if (choice.dictionary && choice.encoding != Encoding::kLzw) {
    throw Error("a dictionary size goes with LZW only; ask for Encoding::kLzw or leave it out");
  }
  if (choice.dictionary) {
    return LzwBlock(data, *choice.dictionary);
  }
  return choice.encoding ? BlockAs(data, *choice.encoding) : SmallestBlock(data);
}

}  // namespace tvb
