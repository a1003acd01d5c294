# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""Writes SVF statements down in every way that is legal."""

COMMENTS = ('', ' a comment', ' with ; and (06) in it', ' SIR 8 TDI (FF);', '!', '// twice',
            ' \t tab', ' wait 1.00e+000 SEC', '---------', ' )', ' 25 \u00b0C')


class Layout:
    """How a file writes its words down."""

    def __init__(self, rng):
        self._rng = rng
        self._line_end = rng.choice(('\n', '\n', '\n', '\r\n', '\r\n', '\r'))
        self._case = rng.choice((str.upper, str.upper, str.lower, str.capitalize, self._any_case))
        self._odd = rng.choice((0, 0, .02, .2))    # how often there is more than a blank
        self._fold = rng.choice((0, 0, 0, 8, 31, 64, 255))
        self._zeros = rng.choice((0, 0, .3))
        self._one_line = rng.choice((0, 0, .3))

    def file(self, statements):
        rng = self._rng
        text = '\ufeff' if rng.random() < .05 else ''
        for words in statements:
            text += self._statement(words)
        if rng.random() < .1:
            text = text.rstrip() + self._space(self._odd)
        elif rng.random() < .1:
            text = text.rstrip().removesuffix(';') + rng.choice(('', self._line_end))
        if rng.random() < .1:
            text += self._line_end + rng.choice(('\x1a', '\0', '\0' * 100, '\x1a\0\0',
                                                 '\x1a' + self._line_end))
        return text

    def _statement(self, words):
        text = ''
        for word in words:
            tight = not text or word[0] == '(' or text[-1] == ')'
            text += self._blank(tight) + self._word(word)
        text += self._blank(True) + ';'
        if self._rng.random() < self._odd / 4:
            text += ';'
        if self._rng.random() < self._one_line:
            return text + self._blank(True)
        return text + self._end_line()

    def _word(self, word):
        if word[0] == '(':
            return '(' + (self._data(word[1:]) if word[1:] else '') + ')'
        if word.isdigit() and self._rng.random() < self._zeros / 4:
            return '0' + word
        return self._case(word)

    def _data(self, digits):
        rng = self._rng
        digits = rng.choice((str.upper, str.lower))(digits)
        if rng.random() < self._zeros:
            digits = rng.choice((digits.lstrip('0') or '0', '0' * rng.randint(1, 9) + digits))
        pieces = [digits]
        if self._fold:
            pieces = [digits[at:at + self._fold] for at in range(0, len(digits), self._fold)]
        elif rng.random() < self._odd:
            cut = rng.randrange(len(digits) + 1)
            pieces = [digits[:cut], digits[cut:]]
        return (self._blank(True) + ''.join(
            piece + (self._space(1) if last else '') for last, piece in
            zip([True] * (len(pieces) - 1) + [False], pieces)) + self._blank(True))

    def _any_case(self, word):
        return ''.join(self._rng.choice((c.upper(), c.lower())) for c in word)

    def _blank(self, may_be_none):
        if self._rng.random() < self._odd:
            return self._space(.5)
        return '' if may_be_none and self._rng.random() < .7 else ' '

    def _space(self, folds):
        rng = self._rng
        text = rng.choice((' ', '\t', '  ', self._line_end, self._line_end + '\t'))
        if rng.random() < folds:
            text += self._line_end
        if rng.random() < self._odd:
            text += self._comment()
        return text

    def _comment(self):
        return self._rng.choice(('!', '//')) + self._rng.choice(COMMENTS) + self._line_end

    def _end_line(self):
        comment = self._rng.random() < self._odd / 2
        return (self._blank(True) + self._comment()) if comment else self._line_end
