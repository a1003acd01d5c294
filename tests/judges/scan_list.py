# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""Lists of scans as `tvb play --scans` writes them, and what the judges do with them."""
import os
import subprocess
from collections import namedtuple

# `number` is 0 for a scan that the driver makes of itself; TDI and TDO as in svf_scans.
Played = namedtuple('Played', 'number register bits tdi tdo')


def read(text):
    scans = []
    for line in text.splitlines():
        number, register, bits, _, tdi, _, tdo = line.split()
        scans.append(Played(0 if number == '-' else int(number), register, int(bits),
                            _value(tdi), _value(tdo)))
    return scans


def _value(digits):
    return 0 if digits == '-' else int(digits, 16)


def run(*command):
    """Runs a command that must succeed and returns what it prints."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise SystemExit('FAILED (%d): %s\n%s%s' %
                         (done.returncode, ' '.join(command), done.stdout, done.stderr))
    return done.stdout


def compiled(tvb, svf, image):
    """Compiles an SVF file to `image`, and to those that follow it. Returns the files' names."""
    run(tvb, 'compile', svf, '-o', image)
    files = [image]
    while os.path.exists('%s-%d' % (image, len(files) + 1)):
        files.append('%s-%d' % (image, len(files) + 1))
    return files


def of_source(played, asked):
    """The scans of `played` that the source asks for: not those that the driver makes of itself,
    nor the opening IR scan that the compiler may have put before all others."""
    own = [scan for scan in played if scan.number != 0]
    opened = len(own) == len(asked) + 1 and own[0].register == 'IR'
    return own[1:] if opened else own


def show(scan):
    return '%s %d TDI %X TDO %X' % (scan.register, scan.bits, scan.tdi, scan.tdo)


def differences(asked, played):
    """What of the scans that a source asks for was not played so, as text; empty if all was."""
    if len(asked) != len(played):
        return ['%d scans are asked for, %d were played' % (len(asked), len(played))]
    return ['scan %d: asked for %s (compared %X), played %s' %
            (number, show(want), want.compared, show(have))
            for number, (want, have) in enumerate(zip(asked, played), 1)
            if (want.register, want.bits, want.tdi) != (have.register, have.bits, have.tdi) or
            want.tdo != have.tdo & want.compared]
