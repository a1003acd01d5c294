# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# Not built here: written by the module class's documentation. Put the tarball of `make dist` beside it.
# It has the modules only; docs/updaters.md says what a board with updates needs of packaging/systemd.
SUMMARY = "Linux modules that program a CPLD over four GPIO lines"
LICENSE = "BSD-3-Clause | GPL-2.0-only"
LIC_FILES_CHKSUM = "file://LICENSE;md5=875fd681ba0bde3ab2e90d1de63c8c62"

SRC_URI = "file://m7_cpldjtag_drv-${PV}.tar.gz"
S = "${WORKDIR}/m7_cpldjtag_drv-${PV}"

inherit module

# The class gives KERNEL_SRC and O; the driver takes the versions of what board/ exports.
do_compile() {
	unset CFLAGS CPPFLAGS CXXFLAGS LDFLAGS
	for folder in board driver; do
		oe_runmake -C ${S}/$folder CC="${KERNEL_CC}" LD="${KERNEL_LD}" AR="${KERNEL_AR}" \
			O=${STAGING_KERNEL_BUILDDIR} SIM=0 modules
	done
}

do_install() {
	unset CFLAGS CPPFLAGS CXXFLAGS LDFLAGS
	for folder in board driver; do
		oe_runmake -C ${S}/$folder CC="${KERNEL_CC}" LD="${KERNEL_LD}" \
			O=${STAGING_KERNEL_BUILDDIR} SIM=0 DEPMOD=echo \
			MODLIB="${D}${nonarch_base_libdir}/modules/${KERNEL_VERSION}" modules_install
	done
}
