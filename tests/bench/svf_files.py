# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""Made-up SVF files, as vendors' tools write them, of any size."""
import random

MEGABYTE = 1000000
DIGITS_A_LINE = 64
HEAD = 'TRST OFF;\nENDIR IDLE;\nENDDR IDLE;\nSTATE RESET;\nFREQUENCY 1E6 HZ;\n'


def _hex(generator, bits):
    """Lines of digits, every fourth of which is of a blank row."""
    lines = []
    for first in range(0, bits // 4, DIGITS_A_LINE):
        digits = min(DIGITS_A_LINE, bits // 4 - first)
        blank = first // DIGITS_A_LINE % 4 == 3
        lines.append('F' * digits if blank else '%0*X' % (digits, generator.getrandbits(4 * digits)))
    return '\n        '.join(lines)


def _row(generator, bits, blank):
    """A row is programmed, waited for and read back."""
    data = _hex(generator, bits)
    digits = bits // 4
    return (f'SIR 8 TDI (30);\nSDR 32 TDI ({_hex(generator, 32)});\n'
            f'SIR 8 TDI (31);\nSDR {bits} TDI ({data});\nRUNTEST IDLE 50 TCK;\n'
            f'SIR 8 TDI (32);\nSDR {bits} TDI ({"0" * digits})\n'
            f'    TDO ({"F" * digits if blank else data})\n    MASK ({"F" * digits});\n')


# What a file is made of, over and over. `blank`: what is read back is all ones.
KINDS = {
    'rows-2048': lambda generator, blank: _row(generator, 2048, blank),
    'rows-128': lambda generator, blank: _row(generator, 128, blank),
    'sdr-32': lambda generator, blank: f'SDR 32 TDI ({generator.getrandbits(32):08X});\n',
}


def write(path, kind, megabytes, blank=False):
    """Writes a file of about that size, the same in every run. Returns its size in bytes."""
    generator = random.Random(1)
    make = KINDS[kind]
    size = len(HEAD)
    with open(path, 'w') as file:
        file.write(HEAD)
        while size < megabytes * MEGABYTE:
            text = make(generator, blank)
            size += file.write(text)
    return size
