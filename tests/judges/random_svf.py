#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""random_svf.py SEED

Writes a random SVF file to standard output, the same for the same number. Every statement and field
occurs but PIO and PIOMAP, in every form that is legal.

One file in four answers: each TDO is what a chain of DEVICES devices in BYPASS gives, so that a
player of another make gets through. Such a file has nothing that has no form in a TVB file; it
waits for a few hundred clocks at a time, since OpenOCD sends each clock through a socket.
"""
import os
import random
import sys
from fractions import Fraction

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import random_values
import svf_layout

DEVICES = 2

STABLE = ('RESET', 'IDLE', 'IRPAUSE', 'DRPAUSE')
PAUSES = STABLE[2:]

# Where the TAP goes with TMS 0 and 1.
NEXT = {
    'RESET': ('IDLE', 'RESET'), 'IDLE': ('IDLE', 'DRSELECT'),
    'DRSELECT': ('DRCAPTURE', 'IRSELECT'), 'DRCAPTURE': ('DRSHIFT', 'DREXIT1'),
    'DRSHIFT': ('DRSHIFT', 'DREXIT1'), 'DREXIT1': ('DRPAUSE', 'DRUPDATE'),
    'DRPAUSE': ('DRPAUSE', 'DREXIT2'), 'DREXIT2': ('DRSHIFT', 'DRUPDATE'),
    'DRUPDATE': ('IDLE', 'DRSELECT'), 'IRSELECT': ('IRCAPTURE', 'RESET'),
    'IRCAPTURE': ('IRSHIFT', 'IREXIT1'), 'IRSHIFT': ('IRSHIFT', 'IREXIT1'),
    'IREXIT1': ('IRPAUSE', 'IRUPDATE'), 'IRPAUSE': ('IRPAUSE', 'IREXIT2'),
    'IREXIT2': ('IRSHIFT', 'IRUPDATE'), 'IRUPDATE': ('IDLE', 'DRSELECT'),
}

# What a file may have, and how often it does.
FEATURES = {'resets': .45, 'trst': .3, 'resumes': .4, 'pauses left': .4, 'pads': .4,
            'pads compare': .5, 'free bits': .4, 'masks': .6, 'long': .12, 'blocks': .4,
            'frequency': .6, 'paths': .5, 'long waits': .3, 'times': .6}

class _Chain:
    """Devices in BYPASS, as a file that answers sees them: what is shifted in comes out again after
    what they have captured."""

    CAPTURED = {'IR': (sum(1 << 8 * device for device in range(DEVICES)), 8 * DEVICES),
                'DR': (0, DEVICES)}

    def __init__(self):
        self.tdi = {}  # the data kept of each register
        self._stream = self._sent = 0

    def begin(self, kind):
        self._stream, self._held = self.CAPTURED[kind]
        self._sent = 0

    def shift(self, bits, tdi):
        """Returns TDO."""
        self._stream |= tdi << self._held
        tdo = self._stream & ((1 << bits) - 1)
        self._stream >>= bits
        return tdo

    @classmethod
    def of_pad(cls, name, bits, tdi):
        """What a pad always reads, and the mask of that: a header follows the capture, a trailer
        data of another length."""
        captured, held = cls.CAPTURED[name[1:]]
        whole = (1 << bits) - 1
        mask = whole if name[0] == 'H' else whole & ~((1 << held) - 1)
        return ((tdi << held) | captured) & whole, mask


class _File:
    """Writes statements, as lists of words, and keeps what is needed for them to be legal."""

    def __init__(self, rng):
        self._rng = rng
        kind = rng.random()
        self.answers = kind < .25
        self._formless = .6 < kind <= .9    # has pauses that no TVB file can say
        self._never = .9 < kind             # has something that none can say at all
        self._has = {name: rng.random() < often for name, often in FEATURES.items()}
        self._chain = _Chain()
        self._bits = dict.fromkeys(('SIR', 'SDR', 'HIR', 'TIR', 'HDR', 'TDR'), 0)
        self._ends = {'IR': 'IDLE', 'DR': 'IDLE'}
        self._run = self._run_end = 'IDLE'
        self._hertz = 1000000
        self._at = None
        self._paused = None
        self._trst = None
        self._in_block = False
        self._usual = [self._any_length() for _ in range(3)]
        self.statements = []

    def write(self):
        rng = self._rng
        self._opening()
        length = rng.choice((2, 5, 15, 40))
        refused = rng.randrange(length) if self._never else None
        for number in range(length):
            if number == refused:
                self._refused()
            elif self._has['blocks'] and rng.random() < .15:
                self._block()
            else:
                self._any()
        if self._has['resets'] and rng.random() < .5:
            self._reset()
        return self.statements

    def _put(self, *words):
        self.statements.append(list(words))

    def _opening(self):
        rng = self._rng
        if self._has['trst']:
            self._trst_statement()
        for name in ('HIR', 'TIR', 'HDR', 'TDR'):
            if rng.random() < .3:
                self._put(name, '0')
        if rng.random() < .5:
            self._state()
        if rng.random() < .5:
            self._end()
        if self._has['resumes']:
            kind = rng.choice(('IR', 'DR'))
            self._ends[kind] = kind + 'PAUSE'
            self._put('END' + kind, self._ends[kind])

    def _any(self):
        rng = self._rng
        choices = [(self._scan, 60), (self._runtest, 18), (self._end, 6), (self._state, 8)]
        if self._has['resets']:
            choices.append((self._reset, 5))
        if self._has['pads']:
            choices.append((self._pad, 8))
        if self._has['frequency']:
            choices.append((self._frequency, 5))
        if self._has['trst']:
            choices.append((self._trst_statement, 3))
        actions, weights = zip(*choices)
        rng.choices(actions, weights)[0]()

    # A stretch and its repeats, one of which may be another.
    def _block(self):
        rng = self._rng
        for kind in ('IR', 'DR'):
            if self._ends[kind] != 'IDLE':
                self._put('END' + kind, 'IDLE')
                self._ends[kind] = 'IDLE'
        if self._trst == 'ON':
            self._put('TRST', 'OFF')
            self._trst = 'OFF'
        self._put('STATE', 'IDLE')
        self._at, self._paused = 'IDLE', None
        self._in_block = True
        begin = len(self.statements)
        for _ in range(rng.randint(1, 5)):
            rng.choices((self._scan, self._runtest), (3, 1))[0]()
        body = self.statements[begin:]
        after = {words[0]: self._bits[words[0]] for words in body if words[0] in self._bits}
        tdi = {name: self._chain.tdi[name] for name in after}
        for _ in range(rng.choice((1, 2, 3, 8, 40, 100))):
            if rng.random() < .03:
                self._scan()
            self.statements += body
        self._bits.update(after)
        self._chain.tdi.update(tdi)
        self._in_block = False

    # Scans and pads.

    def _any_length(self):
        rng = self._rng
        kind = rng.random()
        if kind < .5:
            return rng.randint(1, 40)
        if kind < .8:
            return max(1, 8 * rng.randint(1, 12) + rng.randint(-1, 1))
        if kind < .95 or not self._has['long']:
            return rng.randint(30, 300)
        return rng.randint(300, 4000)

    def _scan(self):
        rng = self._rng
        if self._trst == 'ON':
            self._put('TRST', rng.choice(('OFF', 'Z')))
            self._trst = 'OFF'
        kind = rng.choice(('IR', 'DR', 'DR'))
        if self._paused and rng.random() < .7:
            kind = self._paused
        if (self._paused == kind and not self._may_resume() or
                self._at == kind + 'PAUSE' and self._paused != kind and not self._formless):
            self._put('STATE', 'IDLE')
            self._at, self._paused = 'IDLE', None
        name = 'S' + kind
        bits = self._bits[name]
        if not bits or rng.random() < .5:
            bits = rng.choice(self._usual + [8, 8, 32, self._any_length()])
        if self._has['pads'] and not self._in_block and rng.random() < .01:
            bits = 0
        if not bits and not self._bits['H' + kind] + self._bits['T' + kind]:
            bits = 1
        self._put(name, str(bits), *self._scan_fields(kind, bits))
        self._bits[name] = bits
        self._leave_scan(kind)

    def _may_resume(self):
        return self._has['resumes'] or self._formless

    def _leave_scan(self, kind):
        end = self._ends[kind]
        self._at = end
        self._paused = kind if end == kind + 'PAUSE' else None
        if self._in_block:
            self._at = 'IDLE'

    def _scan_fields(self, kind, bits):
        name = 'S' + kind
        compare = bits and self._may_compare() and self._rng.random() < .4
        fields = self._fields(name, bits, compare and not self.answers)
        if not self.answers:
            return self._in_any_order(fields, bits)
        if self._paused != kind:
            self._chain.begin(kind)
        for part in ('H', 'S', 'T'):
            length = bits if part == 'S' else self._bits[part + kind]
            tdo = self._chain.shift(length, self._chain.tdi.get(part + kind, 0))
            if part == 'S' and compare:
                fields['TDO'] = tdo
        return self._in_any_order(fields, bits)

    def _may_compare(self):
        """What is read depends on bits that each player chooses for itself."""
        return not (self.answers and self._has['free bits'])

    def _fields(self, name, bits, compare):
        """TDI, TDO, MASK and SMASK, as numbers."""
        rng = self._rng
        fields = {}
        if not bits:
            self._chain.tdi[name] = 0
            return fields
        if bits != self._bits[name] or self._in_block or rng.random() < .6:
            fields['TDI'] = self._chain.tdi[name] = random_values.data(self._rng, bits)
        if compare:
            fields['TDO'] = random_values.data(self._rng, bits)
        if self._has['masks'] and rng.random() < .3:
            fields['MASK'] = random_values.mask(self._rng, bits)
        if self._has['free bits'] and rng.random() < .3:
            fields['SMASK'] = random_values.mask(self._rng, bits)
        return fields

    def _in_any_order(self, fields, bits):
        names = list(fields)
        self._rng.shuffle(names)
        words = []
        for name in names:
            words += [name, '(%0*X' % ((bits + 3) // 4, fields[name])]
        return words

    def _pad(self):
        rng = self._rng
        name = rng.choice(('HIR', 'TIR', 'HDR', 'TDR'))
        lengths = (0, 0, 8, 16, 24, rng.randint(1, 40)) if name[1] == 'I' else (0, 0, 1, 2, 3,
                                                                               rng.randint(1, 40))
        bits = rng.choice(lengths)
        if not bits and rng.random() < .1:
            self._put(name, '0', 'TDI', rng.choice(('(', '(0')))
            self._bits[name] = self._chain.tdi[name] = 0
            return
        compare = (bits and self._has['pads compare'] and self._may_compare() and
                   rng.random() < .4)
        fields = self._fields(name, bits, compare)
        if compare and self.answers:
            # A header of a scan that resumes another does not follow the capture.
            if name[0] == 'H' and self._has['resumes']:
                fields.pop('TDO')
            else:
                fields['TDO'], mask = _Chain.of_pad(name, bits, self._chain.tdi[name])
                fields['MASK'] = mask & fields.get('MASK', mask)
        self._put(name, str(bits), *self._in_any_order(fields, bits))
        self._bits[name] = bits

    # What is between scans.

    def _end(self):
        rng = self._rng
        kind = rng.choice(('IR', 'DR'))
        states = ['IDLE', 'IDLE']
        if self._has['pauses left'] or self._has['resumes']:
            states += [kind + 'PAUSE'] * 3
        if self._has['resets']:
            states.append('RESET')
        if self._formless:
            states += PAUSES
        self._ends[kind] = rng.choice(states)
        self._put('END' + kind, self._ends[kind])

    def _runtest(self):
        rng = self._rng
        words = ['RUNTEST']
        if self._run != 'IDLE' and not self._formless or rng.random() < .5:
            self._run = self._run_end = rng.choice(self._run_states())
            words.append(self._run)
        clocks, seconds = self._amounts()
        if clocks is not None:
            words += [rng.choice((str(clocks), str(clocks), '%d.0' % clocks)),
                      rng.choice(('TCK', 'TCK', 'TCK', 'SCK'))]
        if seconds is not None:
            words += [random_values.real(rng, seconds), 'SEC']
            if rng.random() < .2:
                words += ['MAXIMUM', random_values.real(rng, seconds * rng.randint(1, 3)), 'SEC']
        if self._run_end != 'IDLE' and not self._formless or rng.random() < .3:
            self._run_end = self._end_state()
            words += ['ENDSTATE', self._run_end]
        self._put(*words)
        self._at, self._paused = self._run_end, None

    def _run_states(self):
        if self._formless and not self._in_block:
            return ('IDLE',) * 3 + PAUSES
        return ('IDLE',)

    def _end_state(self):
        if self._in_block:
            return 'IDLE'
        states = ['IDLE'] * 4 + (['RESET'] if self._has['resets'] else [])
        return self._rng.choice(states + list(PAUSES) * self._formless)

    def _amounts(self):
        """Clocks and seconds, one of them may be none."""
        rng = self._rng
        short = self.answers or self._in_block or not self._has['long waits']
        most = 200 if short else rng.choice((200, 3000, 50000))
        clocks = rng.choice((0, 1, 2, rng.randint(0, 9)) + 2 * (rng.randint(0, most),))
        seconds = Fraction(rng.randint(0, most * 10), 10 * self._hertz)
        digits = 10 ** rng.choice((6, 6, 7, 9))
        seconds = Fraction(int(seconds * digits), digits)
        form = rng.random()
        if not self._has['times'] or form < .4:
            return clocks, None
        return (None, seconds) if form < .7 else (clocks, seconds)

    def _frequency(self):
        hertz = self._rng.choice((None, 1000000, 1000000, 10 ** 7, 2500000, 33333333, 1000, 250,
                                  Fraction(1234567, 10), 12 * 10 ** 6, 3 * 10 ** 9))
        self._hertz = int(hertz or 1000000)
        words = [random_values.real(self._rng, Fraction(hertz)), 'HZ'] if hertz else []
        self._put('FREQUENCY', *words)

    def _trst_statement(self):
        rng = self._rng
        if self._trst == 'ABSENT':
            return
        modes = ['OFF', 'Z'] + (['ON'] * 2 if self._has['resets'] or not self._any_scan() else [])
        if self._trst is None:
            modes.append('ABSENT')
        self._trst = rng.choice(modes)
        self._put('TRST', self._trst)
        if self._trst == 'ON':
            self._at, self._paused = 'RESET', None
            if rng.random() < .4:
                self._runtest()
            if rng.random() < .8:
                self._trst = rng.choice(('OFF', 'Z'))
                self._put('TRST', self._trst)

    def _any_scan(self):
        return any(words[0] in ('SIR', 'SDR') for words in self.statements)

    def _reset(self):
        rng = self._rng
        for _ in range(rng.choice((1, 1, 1, 2))):
            self._put('STATE', 'RESET')
            self._at, self._paused = 'RESET', None
            if rng.random() < .5:
                self._put('STATE', 'IDLE')
                self._at = 'IDLE'

    def _state(self):
        rng = self._rng
        if self._has['paths'] and self._at and rng.random() < .6:
            self._path()
            return
        may_reset = self._has['resets'] or not self._any_scan()
        states = ['IDLE'] * 3 + ['RESET'] * may_reset + list(PAUSES) * self._formless
        state = rng.choice(states)
        words = [state]
        if state == 'RESET' and rng.random() < .3:
            words += ['IDLE'] * rng.randint(1, 3)
        self._put('STATE', *words)
        self._at, self._paused = words[-1], None

    def _path(self):
        """A walk from where the TAP is to a stable state."""
        rng = self._rng
        at = self._at
        path = []
        for _ in range(rng.choice((3, 8, 20))):
            at = self._step(at)
            if at is None:
                break
            path.append(at)
        while path and path[-1] not in STABLE:
            path.pop()
        if path:
            self._put('STATE', *path)
            # A path of one state is that state by the shortest way.
            self._at, self._paused = path[-1], None

    def _step(self, at):
        allowed = [state for state in NEXT[at] if self._may_enter(at, state)]
        return self._rng.choice(allowed) if allowed else None

    def _may_enter(self, at, state):
        if state[2:] in ('CAPTURE', 'SHIFT', 'PAUSE'):
            return self._formless
        if state == 'RESET' or state == 'IRSELECT' and not self._formless:
            return self._has['resets'] or not self._any_scan()
        return True

    def _refused(self):
        """One thing that has no form in a TVB file, and the way back to where it has."""
        rng = self._rng
        kind = rng.choice(('IR', 'DR'))
        self._put('STATE', 'IDLE')
        for words in rng.choice((
                [['HIR', '0'], ['TIR', '0'], ['SIR', '0']],
                [['PIO', '(HLZ']], [['PIOMAP', '(IN a']],
                [['RUNTEST', 'RESET', '5', 'TCK'], ['RUNTEST', 'IDLE', '5', 'TCK']],
                [['TRST', 'ON'], ['S' + kind, '9', 'TDI', '(000'], ['TRST', 'Z']])):
            self._put(*words)
            if words[0] in self._bits:
                self._bits[words[0]] = int(words[1])
        self._ends[kind] = 'IDLE'
        self._put('END' + kind, 'IDLE')
        self._put('STATE', 'IDLE')
        self._at, self._paused, self._trst = 'IDLE', None, self._trst and 'Z'
        self._run = self._run_end = 'IDLE'
        self._put('RUNTEST', 'IDLE', '1', 'TCK')


def make(seed):
    """Returns the text of that number, and whether it answers."""
    rng = random.Random(seed)
    file = _File(rng)
    statements = file.write()
    return svf_layout.Layout(rng).file(statements), file.answers


if __name__ == '__main__':
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.stdout.buffer.write(make(int(sys.argv[1]))[0].encode())
