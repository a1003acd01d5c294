# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# The targets of driver/Makefile and board/Makefile, for those who build the modules of one folder by
# itself: `modules`, `modules_install` and `clean`. kbuild takes the Kbuild beside them. Nothing is
# installed on the machine or fetched. Variables:
#   KERNEL_SRC=DIR, KDIR=DIR   the kernel's tree; that of the running kernel where none is given
#   INSTALL_MOD_PATH=DIR       modules_install: the root of the board's file system
# and all that kbuild has: O=, ARCH=, CROSS_COMPILE=, CC=, LLVM=, W=, C=, KBUILD_EXTRA_SYMBOLS=, ...
#
# An including Makefile may set, before:
#   not-installed              modules that modules_install leaves out
KDIR ?= /lib/modules/$(shell uname -r)/build
KERNEL_SRC ?= $(KDIR)
DEPMOD ?= depmod

ifneq ($(word 2,$(CURDIR)),)
$(error kbuild takes no path with a space, and this is $(CURDIR))
endif

# A distribution's headers may name a compiler of their own, which only CC= overrides.
ifneq ($(LLVM),)
ifneq ($(origin CC),command line)
compiler := CC=$(if $(filter %/,$(LLVM)),$(LLVM))clang$(filter -%,$(LLVM))
endif
endif

kbuild = -C $(KERNEL_SRC) M=$(CURDIR) $(compiler)

.DEFAULT_GOAL := modules
.PHONY: modules modules_install modules_installable clean

modules:
	@$(MAKE) $(kbuild) modules

# Modules for another processor would go among those of this machine.
machine := $(shell uname -m)
ours := $(machine) $(patsubst x86_64,x86,$(machine)) $(patsubst aarch64,arm64,$(machine)) \
        $(patsubst armv%,arm,$(machine)) $(patsubst riscv64,riscv,$(machine))
cross := $(if $(ARCH),$(filter-out $(ours),$(ARCH)),$(CROSS_COMPILE))

modules_installable:
	@$(if $(cross),$(if $(INSTALL_MOD_PATH)$(MODLIB),:,echo "modules_install: these modules are not\
	  for this machine: INSTALL_MOD_PATH= has to name their root" >&2; exit 1),:)

# kbuild installs what this file names.
list := $(CURDIR)/modules.order
leave-out = $(if $(not-installed),\
  trap 'mv -f $(list).all $(list)' EXIT; trap 'exit 1' HUP INT TERM; cp $(list) $(list).all; \
  sed -i $(foreach m,$(not-installed),-e '/\/$(m)\.k*o$$/d' -e '/^$(m)\.k*o$$/d') $(list);)

modules_install: modules_installable
	@test -s $(list) || { echo "modules_install: nothing has been built in $(CURDIR)" >&2; exit 1; }
	@set -e; $(leave-out) \
	$(MAKE) $(kbuild) $(if $(INSTALL_MOD_PATH),INSTALL_MOD_PATH=$(abspath $(INSTALL_MOD_PATH))) modules_install
	@$(if $(MODLIB),,$(depmod))

# kbuild does so only where the kernel was built. Whoever gives a MODLIB has a depmod of his own.
depmod = PATH=$$PATH:/usr/sbin:/sbin; \
  release=$$(modinfo -F vermagic $$(sed 's/\.k*o$$/.ko/; s,^[^/],$(CURDIR)/&,; q' $(list)) | cut -d' ' -f1); \
  if ! command -v $(firstword $(DEPMOD)) >/dev/null; then \
    echo "There is no $(firstword $(DEPMOD)) here: run depmod $$release on the board."; \
  else \
    $(DEPMOD) $(if $(INSTALL_MOD_PATH),-b $(abspath $(INSTALL_MOD_PATH))) $$release 2>&1 | \
      sed '/could not open modules\./d'; \
  fi

clean:
	@$(MAKE) $(kbuild) clean
