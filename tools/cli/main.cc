// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The program tvb.
#include "tools/cli/command.h"

int main(int argc, char **argv) {
  return tool::Run(argc, argv);
}
