# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Data blocks of each of the five encodings, and blocks without one, arrive alike.
load_all "$alone"
for file in raw.tvb run-length.tvb nibble.tvb bit-coding.tvb lzw.tvb plain.tvb; do
  completes loop.tvb
  holds 1 looplooplooplooplooplooplooploop
  completes $file
  holds 1 "$text"
done
