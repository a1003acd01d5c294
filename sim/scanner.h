// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reading names, numbers and signs from a NUL-terminated text, with the place of the first error.
#ifndef SIM_SCANNER_H
#define SIM_SCANNER_H

#include "config.h"

namespace sim {

// A stretch of the text.
struct Word {
  const char *text;
  sim_size length;
  sim_size position;

  bool Is(const char *name) const;
};

class Scanner {
 public:
  Scanner(const char *text, sim_text_error *error) : text_(text), error_(error) {}

  // The offset of the next character that is not a blank.
  sim_size Position();

  bool AtEnd();

  // Takes a sign if it is next.
  bool Accept(char sign);

  // Takes a sign, or fails with `reason`.
  bool Expect(char sign, const char *reason);

  // Takes letters, digits and '-'; the word has length 0 where there are none.
  Word TakeWord();

  // Takes a decimal or 0x number of at most 32 bits, or fails.
  bool TakeNumber(sim_u32 &value);

  // Notes an error at a position and returns false.
  bool Fail(sim_size position, const char *reason);

 private:
  bool TakeDigits(unsigned base, sim_size start, sim_u32 &value);

  const char *text_;
  sim_text_error *error_;
  sim_size at_ = 0;
};

}  // namespace sim

#endif
