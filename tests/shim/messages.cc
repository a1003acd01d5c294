// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "shim/messages.h"

#include <cstdarg>
#include <utility>

#include "shim/format.h"

namespace shim {
namespace {

struct State {
  std::vector<Message> messages;
  std::function<void(const Message &)> observer;
};

State &TheState() {
  static State state;
  return state;
}

void Keep(Message message) {
  State &state = TheState();
  state.messages.push_back(std::move(message));
  if (state.observer) {
    const Message copy = state.messages.back();
    state.observer(copy);
  }
}

void PrintQuoted(const std::string &text, std::ostream *out) {
  static const char kHex[] = "0123456789abcdef";
  *out << '"';
  for (const char raw : text) {
    const unsigned char c = static_cast<unsigned char>(raw);
    if (c == '\n') {
      *out << "\\n";
    } else if (c == '\r') {
      *out << "\\r";
    } else if (c == '\t') {
      *out << "\\t";
    } else if (c < 0x20 || c >= 0x7F) {
      *out << "\\x" << kHex[c >> 4] << kHex[c & 15];
    } else {
      *out << raw;
    }
  }
  *out << '"';
}

}  // namespace

bool operator==(const Message &a, const Message &b) {
  return a.channel == b.channel && a.module == b.module && a.level == b.level && a.flag == b.flag &&
         a.text == b.text;
}

void PrintTo(const Message &message, std::ostream *out) {
  if (message.channel == Channel::kPrintk) {
    *out << "printk ";
  } else {
    *out << "log(" << message.module << ", " << message.level << ", " << message.flag << ") ";
  }
  PrintQuoted(message.text, out);
}

const std::vector<Message> &Messages() {
  return TheState().messages;
}

void ClearMessages() {
  TheState().messages.clear();
}

Message Printk(std::string text) {
  return {Channel::kPrintk, 0, 0, 0, std::move(text)};
}

Message Log(uint32_t module, uint32_t level, std::string text) {
  return {Channel::kLog, module, level, 0, std::move(text)};
}

void OnMessage(std::function<void(const Message &)> observer) {
  TheState().observer = std::move(observer);
}

void ResetMessages() {
  TheState() = State();
}

}  // namespace shim

extern "C" {

int printk(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = shim::Format(format, arguments);
  va_end(arguments);
  const int length = static_cast<int>(text.size());
  shim::Keep(shim::Printk(std::move(text)));
  return length;
}

int drv_log_record(uint32_t module, uint32_t level, uint32_t flag, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = shim::Format(format, arguments);
  va_end(arguments);
  shim::Keep({shim::Channel::kLog, module, level, flag, std::move(text)});
  // The driver ignores the result, so it may as well look like an error.
  return -1;
}

}  // extern "C"
