// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The board's four JTAG lines as the framework's records show them: a download context, a pin
// configuration record and a pin operation table.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace shim {

enum Line : uint8_t { kTck, kTms, kTdi, kTdo };

// One call of a pin callback: a line driven to a level, or TDO read.
struct PinEvent {
  Line line;
  uint8_t level;  // as driven (0 or 1), or the low 8 bits that the read callback returned
  bool read;
};

bool operator==(const PinEvent &a, const PinEvent &b);
void PrintTo(const PinEvent &event, std::ostream *out);

// "K0 I1 M0 R1 K1": K is TCK, M TMS, I TDI, R a read of TDO; one space between events.
std::string PinText(const std::vector<PinEvent> &events);

// One board. Only the fields and slots that the driver may use are filled in: every other field is
// a poisoned address, every other slot a function that fails the test. Lines are identified by
// number. Driving TDO, reading another line and using an unknown number fail the test, and so does
// a record found modified when the object is destroyed. Only one object can exist at a time.
class Pins {
 public:
  Pins();  // TDI 5, TMS 6, TDO 7, TCK 8
  ~Pins();
  Pins(const Pins &) = delete;
  Pins &operator=(const Pins &) = delete;

  // The download context of exactly 136 bytes, the record of exactly 40 and the table of 8 slots.
  void *context();
  const void *config() const;
  const void *operations() const;

  // What the two used fields of the context point to.
  void SetContextConfig(const void *config);
  void SetContextOperations(const void *operations);

  // Stores both pointers in g_tvb_cpld_cfg and g_tvb_jtag_funcs, for tests that call the engine
  // without a download.
  void Select();

  // A target: sees each level driven on TCK, TMS and TDI, and supplies TDO (0 without a target).
  void OnWrite(std::function<void(Line, bool)> target);
  void OnRead(std::function<int()> target);

  // Whether events are recorded (initially yes). The counters always run.
  void Record(bool keep);
  const std::vector<PinEvent> &events() const;
  void ClearEvents();
  std::string Text() const;
  uint64_t writes() const;
  uint64_t reads() const;

  // Replaces slot 0 to 7 of the operation table; null is allowed.
  void SetOperation(int slot, void *function);

 private:
  struct Records;

  static int DriveHigh(uint32_t number);
  static int DriveLow(uint32_t number);
  static int Read(uint32_t number);
  static int Unused(uint32_t number);
  void Drive(uint32_t number, bool level);
  int ReadTdo(uint32_t number);
  void VerifyRecords() const;

  static Pins *current_;
  std::unique_ptr<Records> records_;
  std::function<void(Line, bool)> on_write_;
  std::function<int()> on_read_;
  std::vector<PinEvent> events_;
  bool record_ = true;
  uint64_t writes_ = 0;
  uint64_t reads_ = 0;
};

}  // namespace shim
