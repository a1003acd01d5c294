# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""What went over the lines, read from the waveform that `tvb play --vcd --vcd-state none` draws."""
import re
from collections import namedtuple

from random_svf import NEXT

# A scan as `tvb play --scans` lists it, and how long the TAP was in Run-Test/Idle before it: the
# clocks that kept it there, and the nanoseconds.
Scan = namedtuple('Scan', 'register bits tdi tdo clocks nanoseconds')


class _Tap:
    """Collects scans, a rising edge of TCK at a time."""

    def __init__(self):
        self.scans = []
        self.clocks = self.nanoseconds = 0
        self._state = 'RESET'
        self._since = 0      # the last edge
        self._tdi = []
        self._tdo = []

    def rise(self, now, tms, tdi, tdo):
        state = self._state
        if state.endswith('SHIFT'):
            self._tdi.append(tdi)
            self._tdo.append(tdo)
        if state == 'IDLE':
            self.clocks += tms == '0'
            self.nanoseconds += self.stay(now)
        self._state = NEXT[state][tms == '1']
        self._since = now
        if self._state.endswith('UPDATE') and self._tdi:
            self._end_scan()

    def stay(self, now):
        """The nanoseconds since the last edge, if the TAP is in Run-Test/Idle."""
        return now - self._since if self._state == 'IDLE' else 0

    def _end_scan(self):
        tdi, tdo = (int(''.join(reversed(bits)), 2) for bits in (self._tdi, self._tdo))
        self.scans.append(Scan(self._state[:2], len(self._tdi), tdi, tdo, self.clocks,
                               self.nanoseconds))
        self.clocks = self.nanoseconds = 0
        self._tdi = []
        self._tdo = []


def read(text):
    """Returns the scans of a waveform, and the clocks and nanoseconds in Run-Test/Idle after the
    last of them."""
    head, body = text.split('$enddefinitions $end\n')
    number, unit = re.search(r'\$timescale (\d+) (\w+) \$end', head).groups()
    scale = int(number) * {'ns': 1, 'us': 1000, 'ms': 1000000}[unit]
    lines = {sign: name for sign, name in re.findall(r'\$var wire 1 (\S) (\w+) \$end', head)}
    level = dict.fromkeys(lines.values(), '0')
    tap = _Tap()
    now = 0
    for line in body.split():
        if line[0] == '#':
            now = int(line[1:]) * scale
        elif line[0] in '01xz' and line[1:] in lines:
            name = lines[line[1:]]
            if name == 'TCK' and line[0] == '1' and level['TCK'] == '0':
                tap.rise(now, level['TMS'], level['TDI'], level['TDO'])
            level[name] = line[0]
    return tap.scans, tap.clocks, tap.nanoseconds + tap.stay(now)
