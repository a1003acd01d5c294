# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# What docs/board.md shows of a board whose device tree has the document's node.
# Needs CONFIG_SECURITY_LOCKDOWN_LSM.
. /test/board/try
insmod $modules/jtag_sim.ko "chain=$chip"
try tree
