# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""One random SVF file, judged; judge_random tells by what."""
import math
import os
import random
import subprocess

import openocd
import random_svf
import scan_list
import svf_scans
import tvb_records
import waveform

ENCODINGS = ('raw', 'run-length', 'nibble', 'bit-coding', 'lzw')

# Waveforms of more clocks than that are not drawn.
MAX_CLOCKS = 4000

# The driver's own scans before each file.
OWN_SCANS = 2

class Wrong(Exception):
    """What is wrong with a file."""


def expect(good, text, *values):
    if not good:
        raise Wrong(text % values)


class RandomFile:
    """The judgement of one file."""

    def __init__(self, tvb, seed, folder, counts):
        self.tvb = tvb
        self.folder = folder
        self.counts = counts
        self.rng = random.Random('options %d' % seed)
        self.text, self.answers = random_svf.make(seed)
        self.svf = os.path.join(folder, 'random.svf')
        with open(self.svf, 'w', newline='', encoding='utf-8') as file:
            file.write(self.text)
        self.asked = svf_scans.Reading(self.text)

    def path(self, name):
        return os.path.join(self.folder, name)

    def read(self, name):
        with open(self.path(name)) as file:
            return file.read()

    def run(self, *words, expected=0):
        """Runs the tool, which must exit so."""
        done = subprocess.run([self.tvb, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              text=True)
        expect(done.returncode == expected, 'exit %d in place of %d: tvb %s\n%s%s', done.returncode,
               expected, ' '.join(words), done.stdout[-3000:], done.stderr[-3000:])
        return done.stdout

    # Refusals.

    def refuse(self, *options):
        before = set(os.listdir(self.folder))
        self.run('compile', '-q', self.svf, '-o', self.path('refused.tvb'), *options, expected=2)
        expect(set(os.listdir(self.folder)) == before, 'a file is written in spite of the refusal')

    def refusals(self):
        """False: there is nothing to compile."""
        asked = self.asked
        if asked.never:
            self.refuse()
            self.refuse('--pause-as-idle')
            self.counts['others refused'] += 1
            return False
        if asked.pauses:
            self.refuse()
            self.counts['pauses refused'] += 1
        if len(asked.parts) > 1:
            self.refuse('--no-split', '--pause-as-idle')
            self.counts['resets refused'] += 1
        return True

    # Compiling.

    def options(self):
        rng = self.rng
        self.encoding = self.chain = self.idcode = None
        self.longest = 20
        options = []
        if self.asked.pauses or rng.random() < .1:
            options.append('--pause-as-idle')
            self.counts['pauses taken as idle'] += len(self.asked.pauses)
        if len(self.asked.parts) == 1 and rng.random() < .2:
            options.append('--no-split')
        if rng.random() < .3:
            self.encoding = rng.choice(ENCODINGS)
            options += ['--encoding', self.encoding]
        elif rng.random() < .2:
            self.encoding = 'plain'
            options.append('--no-compress')
        if rng.random() < .3:
            self.longest = rng.choice((0, 1, 2, 100, 10000))
            options += ['--longest-wait', str(self.longest)]
        if rng.random() < .2:
            self.chain = rng.choice((0, 0, 1, 2, 5)), rng.choice((0, 0, 1, 3))
            options += ['--chain', '%d,%d' % self.chain]
        if rng.random() < .2 and not self.answers:
            self.idcode = rng.getrandbits(32), rng.choice((0xFFFFFFFF, 0x0FFFFFFF, 1))
            options += ['--require-idcode', rng.choice(('%08X/%X', '0x%x/0x%x')) % self.idcode]
        if rng.random() < .1:
            options += ['--pin-ns', rng.choice(('0', '12.5', '1e4'))]
        return options + ['-q'] * (rng.random() < .5)

    def compile(self, svf, name, *options):
        self.run('compile', svf, '-o', self.path(name + '.tvb'), *options)
        files = [self.path(name + '.tvb')]
        while os.path.exists(self.path('%s-%d.tvb' % (name, len(files) + 1))):
            files.append(self.path('%s-%d.tvb' % (name, len(files) + 1)))
        return files

    def records(self, files):
        return [tvb_records.parse(self.run('dump', '--json', '--hex', file)) for file in files]

    # Scans.

    def played(self, files, *options):
        """The scans on the lines while the driver plays the files, those of each by themselves."""
        self.run('play', '-q', *files, '--scans', self.path('scans'), *options)
        parts = []
        own = False
        for scan in scan_list.read(self.read('scans')):
            if scan.number == 0 and not own:
                parts.append([])
            own = scan.number == 0
            if not own:
                parts[-1].append(scan)
        return parts

    def added(self, asked, scans):
        """How many scans are before the first that the part asks for: the opening one, and those
        that compare the IDCODE."""
        added = len(scans) - len(asked.scans)
        expect(added in ((2, 3) if self.idcode else (0, 1)), '%d scans are asked for, %d are there',
               len(asked.scans), len(scans))
        if self.idcode:
            self.judge_idcode(scans[added - 2:added])
        place = self.chain or tuple(reversed(asked.pads))
        if added % 2 or any(place):
            self.judge_place(scans[0], place if any(asked.pads) or self.chain else None)
        return added

    def judge_idcode(self, scans):
        before, after = told(scans[0]) or (None, None)
        expect(before is not None, 'no instruction is there to read the IDCODE by')
        value, mask = self.idcode
        wanted = ('DR', before + 32 + after, 0, (value & mask) << after, mask << after)
        expect(scans[1][:5] == wanted, 'the IDCODE is not compared: %r', scans)
        self.counts['IDCODEs required'] += 1

    def judge_place(self, first, place):
        expect(first.register == 'IR' and told(first) and not first.compared,
               'the first record tells no place: %r', first)
        expect(place is None or told(first) == place, 'the place %r is told as %r', place,
               told(first))
        self.counts['places told'] += 1

    def judge_scans(self, records, played):
        """Returns the number of scans added to each part."""
        asked = self.asked.parts
        expect(len(records) == len(played) == len(asked), '%d files are asked for, %d are written, '
               '%d are played', len(asked), len(records), len(played))
        self.counts['files split'] += len(asked) > 1
        self.counts['pieces resumed'] += self.asked.resumed
        added = []
        for part, lines, file in zip(asked, played, records):
            scans, last = tvb_records.Player().play(file)
            expect([scan[:3] for scan in scans] == [scan[1:4] for scan in lines],
                   'the records are not what is played:\n%r\n%r', scans, lines)
            for number, (scan, line) in enumerate(zip(scans, lines), 1):
                expect(line.tdo & scan.compared == scan.tdo, 'scan %d: TDO %X in place of %r',
                       number, line.tdo, scan)
            added.append(self.added(part, scans))
            for number, pair in enumerate(zip(part.scans, scans[added[-1]:]), 1):
                self.judge_scan(number, *pair)
            self.judge_waits(part, added[-1], scans, last)
        return added

    def judge_scan(self, number, want, have):
        whole = (1 << want.bits) - 1
        expect(want[:2] == have[:2] and not (want.tdi ^ have.tdi) & want.cares and
               want.compared == have.compared and want.tdo == have.tdo,
               'scan %d: asked for %s %d TDI %X SMASK %X TDO %X MASK %X\n'
               'found %s %d TDI %X TDO %X MASK %X', number, *want[:3], want.cares, want.tdo,
               want.compared, *have[:5])
        self.counts['scans'] += 1
        self.counts['scans compared'] += want.compared != 0
        self.counts['free bits'] += bin(whole ^ want.cares).count('1')

    def clocks(self):
        """How many clocks there are, nearly."""
        return sum(scan.bits + 10 for part in self.asked.parts for scan in part.scans) + sum(
            clocks_of(wait) for part in self.asked.parts for waits in part.waits for wait in waits)

    # Waits.

    def judge_waits(self, part, added, scans, last):
        have = [scan.waits for scan in scans] + [last]
        have[:added + 1] = [sum(have[:added + 1], [])]
        for number, (asked, runs) in enumerate(zip(part.waits, have)):
            least = sum(clocks_of(wait) for wait in asked)
            clocks = sum(run[0] for run in runs)
            expect(clocks == least, 'after scan %d: %d clocks are asked for, %d run: %r %r', number,
                   least, clocks, asked, runs)
            for clocks, hertz in runs:
                expect(not self.longest or clocks <= max(1, hertz * self.longest // 1000),
                       'after scan %d: %d clocks in one piece', number, clocks)
            self.counts['waits'] += len(asked)

    def judge_waveform(self, added):
        """The lines themselves: the scans as they are listed, and the time before each."""
        scans, clocks, nanoseconds = waveform.read(self.read('vcd'))
        lines = scan_list.read(self.read('scans'))
        expect([scan[:4] for scan in scans] == [line[1:] for line in lines],
               'on the lines are\n%r\nlisted are\n%r', scans, lines)
        stays = [(scan.clocks, scan.nanoseconds) for scan in scans] + [(clocks, nanoseconds)]
        for part, more in zip(self.asked.parts, added):
            before = OWN_SCANS + more
            spent = [tuple(map(sum, zip(*stays[OWN_SCANS:before + 1])))] + stays[before + 1:]
            # What is after the last scan of a file runs into the reset of the next.
            for number, asked in enumerate(part.waits):
                self.judge_stay(number, asked, *spent[number])
            stays = stays[before + len(part.scans):]
        self.counts['waveforms'] += 1
        self.counts['scans in waveforms'] += len(scans)

    def judge_stay(self, number, asked, clocks, nanoseconds):
        least = sum(clocks_of(wait) for wait in asked)
        expect(clocks == least, 'after scan %d: %d clocks are asked for, the lines have %d: %r',
               number, least, clocks, asked)
        least = math.ceil(sum(wait.seconds for wait in asked) * 10 ** 9)
        expect(nanoseconds >= least, 'after scan %d: %d ns are asked for, the lines have %d: %r',
               number, least, nanoseconds, asked)

    # Comparisons.

    def fail_at(self, files, records):
        """Inverts a bit that is compared and one that is not."""
        file, scans = self.rng.choice(list(zip(files, records)))
        scans = tvb_records.Player().play(scans)[0]
        bits = [(number, bit, scan.compared >> bit & 1) for number, scan in enumerate(scans, 1)
                for bit in range(scan.bits)]
        for code, name in ((1, 'bits that fail'), (2, 'bits that nothing compares')):
            compared = code == 1
            chosen = [place for place in bits if place[2] == compared]
            if chosen:
                self.run('play', '-q', file, '--fail-at', '%d:%d' % self.rng.choice(chosen)[:2],
                         expected=code)
                self.counts[name] += 1

    # The way back.

    def go_back(self, files, records, played):
        self.run('check', *files)
        self.run('decompile', '-o', self.path('back.svf'), *files)
        again = self.compile(self.path('back.svf'), 'again', '-q')
        expect(len(again) == len(files), '%d files, decompiled and compiled again: %d', len(files),
               len(again))
        for new, old in zip(self.records(again), records):
            expect(played_by(new) == played_by(old), 'decompiled and compiled again:\n%r\nbefore:\n'
                   '%r', played_by(new), played_by(old))
        for new, old in zip(self.played(again), played):
            expect([line[:4] for line in new] == [line[:4] for line in old],
                   'played, decompiled and compiled again:\n%r\nbefore:\n%r', new, old)

    # OpenOCD.

    def judge_by_openocd(self, server, chain, files, added):
        with open(self.path('plain.svf'), 'w') as file:
            file.write(svf_scans.for_openocd(self.text))
        openocd.play(server, chain, self.path('plain.svf'), self.path('theirs'),
                     self.path('memory'))
        theirs = scan_list.read(self.read('theirs'))
        ours = [scan for part, more in zip(self.played(files, '--chain', chain), added)
                for scan in part[more:]]
        asked = [scan for part in self.asked.parts for scan in part.scans]
        free = any(scan.cares != (1 << scan.bits) - 1 for scan in asked)
        expect(len(theirs) == len(ours) == len(asked), 'OpenOCD plays %d scans, tvb %d of %d',
               len(theirs), len(ours), len(asked))
        for number, (want, their, our) in enumerate(zip(asked, theirs, ours), 1):
            same = (their[1:] == our[1:] if not free else their[1:3] == our[1:3] and
                    not (their.tdi ^ our.tdi) & want.cares)
            expect(same and their.tdi == want.tdi, 'scan %d: OpenOCD plays %s, tvb %s', number,
                   scan_list.show(their), scan_list.show(our))
        self.counts['files by OpenOCD'] += 1
        self.counts['scans by OpenOCD'] += len(asked)

    def judge(self, server, chain):
        if not self.refusals():
            return
        files = self.compile(self.svf, 'out', *self.options())
        records = self.records(files)
        draw = self.clocks() <= MAX_CLOCKS
        played = self.played(files, *(['--vcd', self.path('vcd'), '--vcd-state', 'none'] * draw))
        added = self.judge_scans(records, played)
        if draw:
            self.judge_waveform(added)
        for file in records:
            found = tvb_records.encodings(file)
            expect(not self.encoding or set(found) <= {self.encoding}, 'encodings: %r', found)
            self.counts.update(found if not self.encoding else ())
            self.counts['loops'] += sum(record['name'] == 'LOOP' for record in file)
        self.fail_at(files, records)
        self.go_back(files, records, played)
        if server and self.answers:
            self.judge_by_openocd(server, chain, files, added)


def told(scan):
    """The place in the chain that a scan tells the player: devices before the target and after."""
    if scan.register != 'IR' or scan.bits % 8:
        return None
    # The byte shifted first is that of the device nearest TDO.
    instructions = [scan.tdi >> at & 0xFF for at in range(0, scan.bits, 8)]
    others = [at for at, instruction in enumerate(instructions) if instruction != 0xFF]
    return (len(instructions) - 1 - others[0], others[0]) if len(others) == 1 else None


def played_by(records):
    """The scans of a file with the clocks before each, and the clocks after the last."""
    scans, last = tvb_records.Player().play(records)
    return ([scan[:5] + (sum(run[0] for run in scan.waits),) for scan in scans],
            sum(run[0] for run in last))


def clocks_of(wait):
    """The fewest clocks that a wait asks for."""
    return max(wait.clocks, math.ceil(wait.seconds * wait.hertz))
