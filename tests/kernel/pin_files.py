#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""Writes SVF whose cost on the lines is measured: pin_files.py FOLDER CLOCKS.

Each file takes about so many clocks, with data that is random and the same each time:

  long      scans of 65,536 bits, none of which is compared
  compared  the same, all of which are; the chain is one that reads low
  bits64    scans of 64 bits
  bits8     scans of 8 bits
  runtest   clocks in Run-Test/Idle

NAME.svf is for the driver, with a frequency at which no run-test waits; NAME.plain.svf is the same
without a frequency. echoed.svf is compared.svf for a chain in bypass.
"""
import random
import sys

LONG = 65536


def scans(clocks, bits, ending=lambda data, bits: ''):
    # A scan takes four clocks to get to its data, and two to get from there to Run-Test/Idle.
    for _ in range(max(1, round(clocks / (bits + 5)))):
        data = random.getrandbits(bits)
        yield f'SDR {bits} TDI ({data:0{bits // 4}X}){ending(data, bits)};'


def compared(expected):
    return lambda data, bits: ' TDO (%0*X) MASK (%s)' % (bits // 4, expected(data, bits), 'F' * (bits // 4))


def main():
    folder, clocks = sys.argv[1], int(sys.argv[2])
    random.seed(1)
    files = {
        'long': scans(clocks, LONG),
        'compared': scans(clocks, LONG, compared(lambda data, bits: 0)),
        'echoed': scans(clocks, LONG, compared(lambda data, bits: data << 1 & (1 << bits) - 1)),
        'bits64': scans(clocks, 64),
        'bits8': scans(clocks, 8),
        'runtest': [f'RUNTEST {clocks} TCK;'],
    }
    for name, lines in files.items():
        text = 'SIR 8 TDI (FF);\n' + '\n'.join(lines) + '\n'
        with open(f'{folder}/{name}.svf', 'w', encoding='ascii') as file:
            file.write('FREQUENCY 1E8 HZ;\n' + text)
        with open(f'{folder}/{name}.plain.svf', 'w', encoding='ascii') as file:
            file.write(text)


main()
