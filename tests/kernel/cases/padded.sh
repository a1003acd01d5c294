# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Header and trailer registers cover the other devices of a chain. The file's first record does not
# tell where the target sits, so the IDCODE that is read first is that of nobody: three bypass bits
# and then what was shifted in.
load_all "$three"
completes padded.tvb
holds 2 "$text"
logs_good padded.tvb fffffff8
