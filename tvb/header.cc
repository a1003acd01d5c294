// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/header.h"

#include "tvb/text.h"

namespace tvb {
namespace {

void Expect(Cursor &cursor, HeaderView &view, uint8_t expected, const char *what) {
  if (view.fault) {
    return;
  }
  uint64_t offset = cursor.position();
  uint8_t found = cursor.Byte();
  if (cursor.past_end()) {
    view.fault = {cursor.image().size(),
                  "not a TVB file: it ends inside its header, which takes 16 bytes or more"};
  } else if (found != expected) {
    view.fault = {offset, "not a TVB file: " + Hex(found) + " in its header; expected " + what};
  }
}

void ReadFixedFields(Cursor &cursor, FileHeader &header) {
  for (uint8_t &byte : header.mark) {
    byte = cursor.Byte();
  }
  for (uint8_t &byte : header.stamp) {
    byte = cursor.Byte();
  }
  header.compression = cursor.Byte();
}

}  // namespace

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

HeaderView ReadHeader(Bytes image) {
  HeaderView view;
  Cursor cursor(image, 0);
  Expect(cursor, view, 'a', "'a' as its first byte");
  ReadFixedFields(cursor, view.header);
  Expect(cursor, view, 'b', "'b'");
  view.number = cursor.Number();
  view.header.number = view.number.low();
  Expect(cursor, view, 'V', "'V'");
  Expect(cursor, view, 1, "0x01");
  view.size = cursor.position();
  return view;
}

}  // namespace tvb
