// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "shim/format.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string_view>

namespace shim {
namespace {

// va_list is an array type on some machines, where no reference to it can be passed on.
struct Arguments {
  va_list list;
};

template <typename Value>
std::string Print(const char *conversion, Value value) {
  char text[32];
  std::snprintf(text, sizeof(text), conversion, value);
  return text;
}

std::string String(const char *text) {
  if (text == nullptr) {
    ADD_FAILURE() << "messages: null string given to %s";
    return "(null)";
  }
  return text;
}

// Formats the conversion at the start of `rest`, after the '%', and returns its length; 0: unknown.
size_t Convert(std::string_view rest, Arguments *arguments, std::string *out) {
  const auto is = [rest](std::string_view name) { return rest.substr(0, name.size()) == name; };
  if (is("s")) {
    *out += String(va_arg(arguments->list, const char *));
    return 1;
  }
  if (is("c")) {
    *out += static_cast<char>(va_arg(arguments->list, int));
    return 1;
  }
  if (is("d")) {
    *out += Print("%d", va_arg(arguments->list, int));
    return 1;
  }
  if (is("u")) {
    *out += Print("%u", va_arg(arguments->list, unsigned));
    return 1;
  }
  if (is("8d")) {
    *out += Print("%8d", va_arg(arguments->list, int));
    return 2;
  }
  if (is("lld")) {
    *out += Print("%lld", va_arg(arguments->list, long long));
    return 3;
  }
  if (is("02x")) {
    *out += Print("%02x", va_arg(arguments->list, unsigned));
    return 3;
  }
  if (is("02X")) {
    *out += Print("%02X", va_arg(arguments->list, unsigned));
    return 3;
  }
  return 0;
}

}  // namespace

std::string Format(const char *format, va_list list) {
  if (format == nullptr) {
    ADD_FAILURE() << "messages: null format";
    return "";
  }
  Arguments arguments;
  va_copy(arguments.list, list);
  std::string out;
  std::string_view rest(format);
  while (!rest.empty()) {
    if (rest.front() != '%') {
      out += rest.front();
      rest.remove_prefix(1);
      continue;
    }
    const size_t used = Convert(rest.substr(1), &arguments, &out);
    if (used == 0) {
      ADD_FAILURE() << "messages: conversion not known in the format \"" << format << '"';
      break;
    }
    rest.remove_prefix(used + 1);
  }
  va_end(arguments.list);
  return out;
}

}  // namespace shim
