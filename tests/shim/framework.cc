// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "shim/framework.h"

#include <utility>

namespace shim {
namespace {

struct State {
  int32_t result = 0;
  std::vector<void *> registered;
  std::vector<const char *> unregistered;
  std::function<void()> on_unregister;
};

State &TheState() {
  static State state;
  return state;
}

}  // namespace

void SetRegisterResult(int32_t result) {
  TheState().result = result;
}

const std::vector<void *> &Registered() {
  return TheState().registered;
}

const std::vector<const char *> &Unregistered() {
  return TheState().unregistered;
}

void OnUnregister(std::function<void()> observer) {
  TheState().on_unregister = std::move(observer);
}

void ResetFramework() {
  TheState() = State();
}

}  // namespace shim

extern "C" {

int32_t cpldjtag_driver_register(void *driver) {
  shim::TheState().registered.push_back(driver);
  return shim::TheState().result;
}

void cpldjtag_driver_unregister(const char *name) {
  shim::TheState().unregistered.push_back(name);
  if (shim::TheState().on_unregister) {
    shim::TheState().on_unregister();
  }
}

}  // extern "C"
