// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/wait_splitter.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>

#include "tvb/player.h"
#include "tvb/reader.h"
#include "tvb/seal.h"
#include "tvb/writer.h"

namespace tvb {
namespace {

constexpr uint64_t kMaxPieces = 1000000;

// What a run-test asks for, all fields together.
struct Wait {
  uint64_t microseconds = 0;
  uint64_t cycles = 0;

  uint64_t Total(uint64_t hz) const {
    return microseconds + cycles * 1000000 / hz;
  }
};

Wait WaitOf(const RecordView &record) {
  Wait wait;
  for (const FieldView &field : record.fields) {
    const RunTestField number = ReadRunTestField(field);
    wait.microseconds += number.microseconds + 1000 * number.milliseconds;
    wait.cycles += number.cycles;
  }
  return wait;
}

class Splitter {
 public:
  Splitter(Bytes image, const HeaderView &header, uint64_t milliseconds)
      : image_(image),
        header_(header),
        milliseconds_(milliseconds),
        writer_(FileHeader(), [this](Bytes bytes) { Append(bytes); }) {}

  SplitFile Run() {
    Reader reader(image_, header_);
    Append(image_.first(header_.size));
    uint64_t end = header_.size;
    while (const std::optional<RecordView> record = reader.Next()) {
      Follow(*record);
      const Bytes bytes = image_.subspan(record->offset, record->end - record->offset);
      if (!record->Runs() || !Split(WaitOf(*record))) {
        Append(bytes);
      }
      end = record->end;
    }
    Append(image_.subspan(std::min<uint64_t>(end, image_.size())));
    if (split_.split > 0 && HasSeal(image_)) {
      Seal(split_.image);
    }
    return std::move(split_);
  }

 private:
  void Append(Bytes bytes) {
    split_.image.insert(split_.image.end(), bytes.begin(), bytes.end());
  }

  void Follow(const RecordView &record) {
    if (record.opcode == kFrequency) {
      rate_.Set(record.bits());
    } else if (record.opcode == kLoop || record.opcode == kEndLoop) {
      in_loop_ = record.opcode == kLoop;
    } else if (record.Runs()) {
      rate_.Run();
    }
  }

  // False if the wait is short enough.
  bool Split(const Wait &wait) {
    const uint64_t hz = rate_.Clocked();
    const uint64_t total = wait.Total(hz);
    if (total <= 1000 * milliseconds_) {
      return false;
    }
    ++split_.split;
    split_.longest_microseconds = std::max(split_.longest_microseconds, total);
    WritePieces(wait.cycles, std::max<uint64_t>(hz * milliseconds_ / 1000, 1),
                [this](uint64_t cycles) { writer_.RunTest(cycles); });
    WritePieces(wait.microseconds / 1000, milliseconds_, [this](uint64_t milliseconds) {
      writer_.RunTest(std::chrono::milliseconds(milliseconds));
    });
    if (wait.microseconds % 1000 != 0) {
      writer_.RunTest(std::chrono::microseconds(wait.microseconds % 1000));
    }
    return true;
  }

  void WritePieces(uint64_t whole, uint64_t piece, const std::function<void(uint64_t)> &write) {
    piece = in_loop_ ? std::max(piece, whole / kMaxPieces + 1) : piece;
    const uint64_t pieces = whole / piece;
    if (in_loop_ || pieces == 1) {
      for (uint64_t i = 0; i < pieces; ++i) {
        write(piece);
      }
    } else if (pieces > 1) {
      writer_.BeginLoop(static_cast<uint32_t>(pieces));
      write(piece);
      writer_.EndLoop();
    }
    if (whole % piece != 0) {
      write(whole % piece);
    }
  }

  Bytes image_;
  const HeaderView &header_;
  uint64_t milliseconds_;
  SplitFile split_;
  Writer writer_;   // of the pieces
  ClockRate rate_;  // earlier files may have set one
  bool in_loop_ = false;
};

}  // namespace

SplitFile SplitWaits(Bytes image, const HeaderView &header, uint64_t milliseconds) {
  return Splitter(image, header, milliseconds).Run();
}

}  // namespace tvb
