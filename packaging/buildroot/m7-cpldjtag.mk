################################################################################
#
# m7-cpldjtag
#
################################################################################
# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# Not built here: written by Buildroot's manual. M7_CPLDJTAG_SITE is where the tarball of `make dist` is.

M7_CPLDJTAG_VERSION = 1.0
M7_CPLDJTAG_SOURCE = m7_cpldjtag_drv-$(M7_CPLDJTAG_VERSION).tar.gz
M7_CPLDJTAG_SITE = $(M7_CPLDJTAG_PKGDIR)
M7_CPLDJTAG_SITE_METHOD = file
M7_CPLDJTAG_LICENSE = BSD-3-Clause or GPL-2.0
M7_CPLDJTAG_LICENSE_FILES = LICENSE LICENSES/BSD-3-Clause.txt LICENSES/GPL-2.0-only.txt
# In this order: the driver takes the versions of what board/ exports.
M7_CPLDJTAG_MODULE_SUBDIRS = board driver
M7_CPLDJTAG_MODULE_MAKE_OPTS = SIM=0

$(eval $(kernel-module))
$(eval $(generic-package))
