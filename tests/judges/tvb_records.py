# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""What the records of a TVB file play, in order, as `tvb dump --json --hex` shows them."""
import json
from collections import Counter, namedtuple

from svf_scans import DEFAULT_HZ

# A scan as in svf_scans, and what runs before it: [(clocks, hertz)].
Scan = namedtuple('Scan', 'register bits tdi tdo compared waits')


def parse(text):
    """The records, the header first."""
    return [json.loads(line) for line in text.splitlines()]


def unrolled(records):
    """The records in the order in which they are played."""
    body, passes = None, 0
    for record in records[1:]:
        if record['name'] == 'LOOP':
            body, passes = [], max(1, record['passes'])
        elif record['name'] == 'ENDLOOP':
            yield from body * passes
            body = None
        elif body is not None:
            body.append(record)
        else:
            yield record


def encodings(records):
    """How often each encoding occurs."""
    return Counter(field['encoding'] for record in records[1:] if record['name'] in ('SIR', 'SDR')
                   for field in record['fields'])


class Player:
    """Plays a file as the driver does after one that has set a frequency."""

    def __init__(self, hertz=1):
        self._hertz = hertz

    def play(self, records):
        """Returns the scans of the file, and what runs after the last of them."""
        scans = []
        waits = []
        for record in unrolled(records):
            if record['name'] in ('SIR', 'SDR'):
                scans.append(self._scan(record, waits))
                waits = []
            elif record['name'] == 'RUNTEST' and record['runs']:
                waits.append(self._clocks(record))
            elif record['name'] == 'FREQUENCY':
                self._limit(record['hz'])
        return scans, waits

    @staticmethod
    def _scan(record, waits):
        fields = {field['name']: int(field['data'] or '0', 16) for field in record['fields']}
        mask = fields.get('MASK', 0)
        return Scan(record['name'][1:], record['bits'], fields.get('TDI', 0),
                    fields.get('TDO', 0) & mask, mask, waits)

    def _limit(self, hertz):
        self._hertz = min(hertz, self._hertz or hertz)

    def _clocks(self, record):
        self._hertz = self._hertz or DEFAULT_HZ
        clocks = 0
        for field in record['fields']:
            if field['name'] == 'CYCLES':
                clocks += field['cycles']
            elif field['name'] == 'TIME':
                clocks += field['microseconds'] * self._hertz // 1000000
        return clocks, self._hertz
