// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/bytes.h"

namespace tvb {

void Append(Buffer &out, Bytes bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

}  // namespace tvb
