# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""Random data and numbers of SVF."""


def mask(rng, bits):
    whole = (1 << bits) - 1
    return rng.choice((0, whole, whole, data(rng, bits), data(rng, bits)))


def data(rng, bits):
    """Bits of many kinds, so that each encoding is the best for some."""
    whole = (1 << bits) - 1
    size = bits // 8 + 1
    kind = rng.randrange(9)
    if kind == 0:
        return rng.choice((0, whole))
    if kind == 1:
        pattern = bytes(rng.randrange(256) for _ in range(rng.randint(1, 9)))
        return int.from_bytes((pattern * size)[:size], 'big') & whole
    if kind == 2:
        digits = [rng.choice('0123456789ABCDEF') for _ in range(rng.randint(1, 13))]
        return int((''.join(digits) * 2 * size)[:2 * size], 16) & whole
    if kind == 3:
        usual = rng.choice((0, 255, rng.randrange(256)))
        return int.from_bytes((rng.randrange(256) if rng.random() < .1 else usual
                               for _ in range(size)), 'big') & whole
    if kind == 4:
        runs = b''
        while len(runs) < size:
            runs += bytes([rng.randrange(256)]) * rng.choice((1, 1, 5, 40, 300))
        return int.from_bytes(runs[:size], 'big') & whole
    if kind == 5:
        words = [bytes(rng.randrange(256) for _ in range(rng.randint(1, 6))) for _ in range(4)]
        text = b''
        while len(text) < size:
            text += rng.choice(words)
        return int.from_bytes(text[:size], 'big') & whole
    return rng.getrandbits(bits)


def real(rng, number):
    """A fraction of few decimal digits in one of the ways to write it."""
    digits, power = number, 0
    while digits.denominator != 1:
        digits *= 10
        power += 1
    digits = int(digits)
    forms = ['%dE-%d' % (digits, power), '%dE-%02d' % (digits * 10, power + 1)]
    text = str(digits).zfill(power + 1)
    whole, part = text[:len(text) - power], text[len(text) - power:]
    forms += [whole + '.' + part + rng.choice(('', '0', '00'))] if part else [whole, whole + '.0']
    if not int(whole) and part:
        forms.append('.' + part)
    text = str(digits)
    forms.append('%s.%sE%+04d' % (text[0], text[1:] or '0', len(text) - 1 - power))
    return rng.choice(forms)
