# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""OpenOCD plays SVF files to a simulated chain, through bitbang_server."""
import json
import subprocess

TIMEOUT = 120


def _configuration(port, chain, svf):
    """OpenOCD's commands. Its first device is the one nearest TDO; a pulse on SRST makes the server
    begin its list."""
    lines = ['gdb_port disabled', 'tcl_port disabled', 'telnet_port disabled',
             'adapter driver remote_bitbang', 'remote_bitbang host 127.0.0.1',
             'remote_bitbang port %s' % port, 'reset_config srst_only']
    for number, device in reversed(list(enumerate(chain['devices'], 1))):
        idcode = device.get('idcode')
        lines.append('jtag newtap chip device%d -irlen 8%s' %
                     (number, ' -expected-id %s' % idcode if idcode else ''))
    return lines + ['init', 'adapter assert srst', 'adapter deassert srst', 'svf {%s}' % svf,
                    'shutdown']


def play(server, chain, svf, scans, memory):
    """Plays `svf`, and writes the scans that the chain has seen to `scans` and what is in its
    memory to `memory`, as `tvb play` does. What OpenOCD scans of itself at first is left out."""
    with open(chain) as text:
        devices = json.load(text)
    with subprocess.Popen([server, chain, scans, memory], stdout=subprocess.PIPE,
                          text=True) as running:
        try:
            port = running.stdout.readline().strip()
            commands = []
            for line in _configuration(port, devices, svf):
                commands += ['-c', line]
            done = subprocess.run(['openocd'] + commands, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, timeout=TIMEOUT)
            if done.returncode != 0:
                raise SystemExit('FAILED: OpenOCD ended with %d:\n%s' %
                                 (done.returncode, done.stdout))
            if running.wait(TIMEOUT) != 0:
                raise SystemExit('FAILED: the server ended with %d' % running.returncode)
        finally:
            running.kill()
