# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""The scans that an SVF file asks for, read in a few lines of its own, and the file as OpenOCD likes
it.

This shares nothing with the tool under test, so that both cannot be wrong together. Numbers hold a
register's bits, bit 0 being the one that is shifted first.
"""
import math
import re
from collections import namedtuple

# One scan on the wire, header and trailer included. `compared` has a 1 for every bit of TDO that
# must be as in `tdo`.
Scan = namedtuple('Scan', 'register bits tdi tdo compared')

FIELD = re.compile(r'(TDI|TDO|MASK|SMASK)\s*\(([0-9A-F\s]*)\)')


class _Register:
    """What SVF keeps of one of SIR, SDR, HIR, TIR, HDR and TDR from statement to statement."""

    def __init__(self):
        self.bits = self.tdi = self.tdo = self.compared = 0
        self.mask = 0

    def take(self, bits, fields):
        whole = (1 << bits) - 1
        if bits != self.bits:
            self.mask = whole
        self.bits = bits
        self.tdi = fields.get('TDI', self.tdi) & whole
        self.mask = fields.get('MASK', self.mask) & whole
        self.tdo = fields.get('TDO', 0) & self.mask
        self.compared = self.mask if 'TDO' in fields else 0


class _Piece:
    """A scan as a part of another."""

    def __init__(self, scan):
        self.bits, self.tdi, self.tdo, self.compared = scan[1:]


def _statements(text):
    text = re.sub(r'(!|//)[^\n]*', '', text).upper()
    return [statement.strip() for statement in text.split(';') if statement.strip()]


def _joined(register, parts):
    bits = tdi = tdo = compared = 0
    for part in parts:
        tdi |= part.tdi << bits
        tdo |= part.tdo << bits
        compared |= part.compared << bits
        bits += part.bits
    return Scan(register, bits, tdi, tdo, compared)


def _fields(statement):
    return {name: int(re.sub(r'\s', '', digits) or '0', 16)
            for name, digits in FIELD.findall(statement)}


def _registers():
    return {name: _Register() for name in ('SIR', 'SDR', 'HIR', 'TIR', 'HDR', 'TDR')}


def read(text):
    """Returns the scans of an SVF text in their order. A scan that resumes the one before it, which
    has paused, is the rest of that."""
    kept = _registers()
    ends = {'ENDIR': 'IDLE', 'ENDDR': 'IDLE'}
    paused = None
    scans = []
    for statement in _statements(text):
        words = statement.replace('(', ' (').split()
        if words[0] in ends:
            ends[words[0]] = words[1]
        elif words[0] in ('STATE', 'RUNTEST', 'TRST'):
            paused = None
        elif words[0] in kept:
            kept[words[0]].take(int(words[1]), _fields(statement))
        if words[0] in ('SIR', 'SDR'):
            kind = words[0][1:]
            before = [_Piece(scans.pop())] if paused == kind else []
            scans.append(_joined(kind, before + [kept['H' + kind], kept[words[0]],
                                                 kept['T' + kind]]))
            paused = kind if ends['END' + kind] == kind + 'PAUSE' else None
    return scans


# The player's clock where a file gives none.
DEFAULT_HZ = 1000000


def _in_clocks(words, hertz):
    """A RUNTEST with its time as clocks: what counts time here is the simulated part, and that
    counts clocks."""
    if 'SEC' not in words:
        return ' '.join(words)
    second = words.index('SEC')
    clocks = math.ceil(float(words[second - 1]) * hertz - 1e-6)
    before = words[1:second - 1]
    if 'TCK' in before:
        count = before.index('TCK') - 1
        clocks = max(clocks, int(before[count]))
        before = before[:count]
    end = words[words.index('ENDSTATE'):] if 'ENDSTATE' in words else []
    return ' '.join(['RUNTEST'] + before + ['%d TCK' % clocks] + end)


def for_openocd(text):
    """Returns the text with one statement a line, without comments, with the data of every scan and
    pad in one piece and a MASK with every TDO, with waits as clocks, and led back from a last pause.
    Changes nothing that is asked for."""
    kept = _registers()
    hertz = DEFAULT_HZ
    lines = []
    for statement in _statements(text):
        words = statement.replace('(', ' (').split()
        if words[0] in kept:
            register = kept[words[0]]
            fields = _fields(statement)
            register.take(int(words[1]), fields)
            statement = '%s %d' % (words[0], register.bits)
            if register.bits:
                statement += ' TDI (%X)' % register.tdi
            if 'TDO' in fields and register.bits:
                statement += ' TDO (%X) MASK (%X)' % (fields['TDO'], register.mask)
        elif words[0] == 'RUNTEST':
            statement = _in_clocks(words, hertz)
        elif words[0] == 'FREQUENCY':
            hertz = int(float(words[1])) if len(words) > 1 else DEFAULT_HZ
            continue
        lines.append(statement + ';\n')
    lines.append('STATE IDLE;\n')
    return ''.join(lines)
