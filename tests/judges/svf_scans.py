# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""What an SVF file asks for, read in a page of its own, and the file as OpenOCD likes it.

This shares nothing with the tool under test, so that both cannot be wrong together. Numbers hold a
register's bits, bit 0 being the one that is shifted first.
"""
import math
import re
from collections import namedtuple
from fractions import Fraction

# One scan on the wire, header and trailer included, and all pieces of one that is resumed.
# `compared` has a 1 for every bit of TDO that must be as in `tdo`; `cares` one for every bit of TDI
# that must be as in `tdi`.
Scan = namedtuple('Scan', 'register bits tdi tdo compared cares')

# Time in Run-Test/Idle: at least that many clocks, at least so many seconds of them (a fraction),
# the clock being no faster than `hertz`.
Wait = namedtuple('Wait', 'clocks seconds hertz')

# What is played from one reset of the TAP to the next. waits[n] are the Waits before scans[n], and
# the last of them those after all. `pads` are the lengths of HDR and TDR at the first scan.
Part = namedtuple('Part', 'scans waits pads')

# The player's clock where a file gives none, and the fastest that a TVB file can name.
DEFAULT_HZ = 1000000
MAX_HZ = 2147483647

FIELD = re.compile(r'(TDI|TDO|MASK|SMASK)\s*\(([0-9A-F\s]*)\)')
PAUSES = ('IRPAUSE', 'DRPAUSE')
STABLE = ('RESET', 'IDLE') + PAUSES


class _Register:
    """What SVF keeps of one of SIR, SDR, HIR, TIR, HDR and TDR from statement to statement."""

    def __init__(self):
        self.bits = self.tdi = self.tdo = self.compared = 0
        self.mask = self.cares = 0

    def take(self, bits, fields):
        whole = (1 << bits) - 1
        if bits != self.bits:
            self.mask = self.cares = whole
        self.bits = bits
        self.tdi = fields.get('TDI', self.tdi) & whole
        self.mask = fields.get('MASK', self.mask) & whole
        self.cares = fields.get('SMASK', self.cares) & whole
        self.tdo = fields.get('TDO', 0) & self.mask
        self.compared = self.mask if 'TDO' in fields else 0


def _statements(text):
    """The statements, each as its words in capitals."""
    text = text.removeprefix('\ufeff').rstrip('\x1a\0\r\n')
    text = re.sub(r'(!|//)[^\r\n]*', '', text).upper()
    return [statement.replace('(', ' (').split() for statement in text.split(';')
            if statement.strip()]


def _fields(words):
    return {name: int(re.sub(r'\s', '', digits) or '0', 16)
            for name, digits in FIELD.findall(' '.join(words[2:]))}


def _joined(register, pieces):
    bits = tdi = tdo = compared = cares = 0
    for piece in pieces:
        tdi |= piece.tdi << bits
        tdo |= piece.tdo << bits
        compared |= piece.compared << bits
        cares |= piece.cares << bits
        bits += piece.bits
    return Scan(register, bits, tdi, tdo, compared, cares)


class _RunTest:
    """The words of a RUNTEST: states, or None; a number of clocks and of seconds, or 0."""

    def __init__(self, words):
        words = words[1:]
        self.run = words.pop(0) if words[0][0].isalpha() else None
        self.clocks = self.seconds = 0
        self.end = words[words.index('ENDSTATE') + 1] if 'ENDSTATE' in words else None
        for number, unit in zip(words[0::2], words[1::2]):
            if unit in ('TCK', 'SCK'):
                self.clocks = int(Fraction(number))
            elif unit == 'SEC':
                self.seconds = Fraction(number)
            else:
                break


class Reading:
    """What a text asks for: `parts`, in order. `pauses`: statements that no TVB file can say, but
    for Run-Test/Idle in place of a pause or of a path that shifts or updates, which `parts` takes;
    `never`: those that none can say at all. `resumed` counts scans that are pieces of others."""

    def __init__(self, text):
        self.pauses = []
        self.never = []
        self.resumed = 0
        self.parts = []
        self._kept = {name: _Register() for name in ('SIR', 'SDR', 'HIR', 'TIR', 'HDR', 'TDR')}
        self._ends = {'ENDIR': 'IDLE', 'ENDDR': 'IDLE'}
        self._run = self._run_end = 'IDLE'
        self._hertz = DEFAULT_HZ
        self._held = False     # by TRST
        self._at = None        # the TAP's state
        self._paused = None    # the register whose last scan goes on if one resumes it
        self._reset = False    # since the last scan or wait of a part with scans
        self._begin()
        for words in _statements(text):
            self._read(words)
        self._settle()

    def _read(self, words):
        name = words[0]
        if name in ('SIR', 'SDR'):
            self._scan(words)
        elif name in self._kept:
            self._kept[name].take(int(words[1]), _fields(words))
        elif name in self._ends:
            self._ends[name] = words[1]
        elif name == 'STATE':
            self._state(words)
        elif name == 'RUNTEST':
            self._runtest(words)
        elif name == 'FREQUENCY':
            self._hertz = min(int(Fraction(words[1])), MAX_HZ) if len(words) > 1 else DEFAULT_HZ
        elif name == 'TRST':
            self._held = words[1] == 'ON'
            if self._held:
                self._enter_reset()
        else:
            self.never.append(' '.join(words))

    def _begin(self):
        self._pieces = None
        self.parts.append(Part([], [[]], []))
        self._reset = False

    def _settle(self):
        """Ends the scan that more pieces might have come for."""
        self._paused = None
        if self._pieces:
            self.parts[-1].scans.append(_joined(*self._pieces))
            self.parts[-1].waits.append([])
        self._pieces = None

    def _play(self):
        """Call it before anything that is played."""
        if self._reset:
            self._begin()

    def _enter_reset(self):
        self._settle()
        self._at = 'RESET'
        self._reset = self._reset or bool(self.parts[-1].scans)

    def _enter(self, state):
        """The TAP goes to a stable state by the shortest way."""
        if state == 'RESET':
            self._enter_reset()
        self._settle()
        self._at = state

    def _scan(self, words):
        kind = words[0][1:]
        register = self._kept[words[0]]
        register.take(int(words[1]), _fields(words))
        pieces = [self._kept['H' + kind], register, self._kept['T' + kind]]
        if self._held or not any(piece.bits for piece in pieces):
            self.never.append(' '.join(words[:2]))
            return
        self._play()
        if self._paused != kind:
            self._settle()
            self._pieces = (kind, [])
            self._note_pads()
        else:
            self.resumed += 1
        self._pieces[1].extend(_joined(kind, [piece]) for piece in pieces)
        self._end_scan(kind, self._ends['END' + kind])

    def _note_pads(self):
        if not self.parts[-1].pads:
            self.parts[-1].pads[:] = self._kept['HDR'].bits, self._kept['TDR'].bits

    def _end_scan(self, kind, end):
        if end == kind + 'PAUSE':
            self._paused = kind
            self._at = end
        else:
            self._enter(end)
            if end in PAUSES:
                self.pauses.append('a scan that ends in ' + end)

    def _wait(self, clocks, seconds=0):
        self._settle()
        if clocks or seconds:
            self._play()
        self.parts[-1].waits[-1].append(Wait(clocks, seconds, self._hertz))

    def _runtest(self, words):
        test = _RunTest(words)
        if test.run:
            self._run = self._run_end = test.run
        if test.end:
            self._run_end = test.end
        if self._run == 'RESET':
            self.never.append('RUNTEST RESET')
            return
        if self._run in PAUSES or self._run_end in PAUSES:
            self.pauses.append(' '.join(words))
        self._wait(test.clocks, test.seconds)
        self._enter(self._run_end)

    def _state(self, words):
        if len(words) == 2:
            if words[1] in PAUSES:
                self.pauses.append(' '.join(words))
            self._enter(words[1])
            return
        captured = False
        for state in words[1:]:
            captured = self._step(state, captured)

    def _step(self, state, captured):
        """One clock of an explicit path. `captured`: a register, and it has not paused."""
        if state == 'IDLE' and self._at == 'IDLE':
            self._wait(1)
        elif state in PAUSES:
            self.pauses.append('a path to ' + state)
            self._enter(state)
        elif state == 'RESET':
            self._enter_reset()
        elif state.endswith('SHIFT') or state.endswith('UPDATE') and captured:
            self.pauses.append('a path through ' + state)
            self._settle()
        elif state.endswith('UPDATE') or state == 'IDLE':
            self._settle()
        self._at = state
        return state.endswith('CAPTURE') or captured and state.endswith('EXIT1')


def read(text):
    """The scans of an SVF text in their order."""
    return [scan for part in Reading(text).parts for scan in part.scans]


def _path_by_resets(path):
    """A path as OpenOCD likes it: to RESET it goes only from a stable state by the shortest way."""
    legs = [[]]
    for state in path:
        if state == 'RESET':
            while legs[-1] and legs[-1][-1] not in STABLE:
                legs[-1].pop()
            legs += [[state], []]
        else:
            legs[-1].append(state)
    return ';\n'.join('STATE ' + ' '.join(leg) for leg in legs if leg)


def _for_openocd(words, kept, hertz):
    """A statement as OpenOCD likes it."""
    if words[0] in kept:
        register = kept[words[0]]
        fields = _fields(words)
        register.take(int(words[1]), fields)
        statement = '%s %d' % (words[0], register.bits)
        if register.bits:
            statement += ' TDI (%X)' % register.tdi
        if 'TDO' in fields and register.bits:
            statement += ' TDO (%X) MASK (%X)' % (fields['TDO'], register.mask)
        return statement
    if words[0] == 'STATE' and 'RESET' in words[2:]:
        return _path_by_resets(words[1:])
    if words[0] == 'RUNTEST':
        test = _RunTest(words)
        clocks = max(test.clocks, math.ceil(test.seconds * hertz))
        return ' '.join(filter(None, ['RUNTEST', test.run, '%d TCK' % clocks,
                                      test.end and 'ENDSTATE ' + test.end]))
    return ' '.join(words)


def for_openocd(text):
    """Returns the text with one statement a line, without comments, with the data of every scan and
    pad in one piece and a MASK with every TDO, with waits as clocks, TRST as a reset by clocks,
    resets after a scan as statements, and led back from a last pause. Changes nothing that is asked
    for."""
    kept = {name: _Register() for name in ('SIR', 'SDR', 'HIR', 'TIR', 'HDR', 'TDR')}
    hertz = DEFAULT_HZ
    reset_after = {}
    lines = []
    for words in _statements(text):
        if words[0] == 'FREQUENCY':
            hertz = int(Fraction(words[1])) if len(words) > 1 else DEFAULT_HZ
        elif words[0] == 'TRST':
            lines += ['STATE RESET'] * (words[1] == 'ON')
        elif words[0] in ('ENDIR', 'ENDDR'):
            reset_after['S' + words[0][3:]] = words[1] == 'RESET'
            lines.append(' '.join(words).replace('RESET', 'IDLE'))
        else:
            lines.append(_for_openocd(words, kept, hertz))
            lines += ['STATE RESET'] * reset_after.get(words[0], False)
    lines.append('STATE IDLE')
    return ''.join(line + ';\n' for line in lines)
