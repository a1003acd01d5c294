// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/header.h"

#include "tvb/number.h"

namespace tvb {

void AppendHeader(Buffer &file, const FileHeader &header) {
  file.push_back('a');
  file.insert(file.end(), header.mark.begin(), header.mark.end());
  file.insert(file.end(), header.stamp.begin(), header.stamp.end());
  file.push_back(header.compression);
  file.push_back('b');
  AppendNumber(file, header.number);
  file.push_back('V');
  file.push_back(1);
}

}  // namespace tvb
