# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# The front door. CMakePresets.json has the build trees of the host side.
#
# Only `make demo` and `make test` install what they miss, of the Debian packages in
# scripts/packages.txt. Every other target names it, and `make setup` installs it. What builds
# modules or boots a kernel fetches the distribution's Linux 5.10 for arm64, once, into build/.
#
# Variables:
#   DESTDIR=, PREFIX=  install, uninstall: a staging folder, and where below it (/usr/local)
#   GROUPS=            setup: these groups of scripts/packages.txt only
#   KDIR=DIR           build against this kernel tree instead of the fetched one (or KERNEL_SRC=)
#   ARCH=, CROSS_COMPILE=   of that tree; arm64 and the Debian cross compiler where not given
#   SANITIZE=1         lib: with the address and undefined-behaviour sanitizers
#   M7_SETUP=no        install nothing, fetch nothing, look for nothing

ifeq ($(origin KERNEL_SRC),undefined)
FETCHED := build/kernel
KDIR ?= $(CURDIR)/$(FETCHED)/headers
else
KDIR ?= $(KERNEL_SRC)
endif
ARCH ?= arm64
ifneq ($(shell uname -m),aarch64)
CROSS_COMPILE ?= aarch64-linux-gnu-
endif

JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
FUZZ_FILES ?= 10000
SETUP := $(if $(filter no,$(M7_SETUP)),true,scripts/setup)
NEED := $(SETUP) --check
FETCH := $(if $(filter no,$(M7_SETUP)),true,scripts/fetch-kernel)
KERNEL_IS_FETCHED := $(filter $(CURDIR)/build/kernel/headers,$(KDIR))
LIB_TREE := $(if $(SANITIZE),build/lib-sanitize,build/host)

# A make that hands out jobs hands them to the build tools as well.
PARALLEL = $(if $(findstring jobserver,$(MAKEFLAGS)),,-j$(JOBS))
BUILD = cmake --build --preset
TEST = ctest --preset host $(CTEST_ARGS)

export KDIR ARCH CROSS_COMPILE DESTDIR PREFIX

.DEFAULT_GOAL := all

.PHONY: help all setup modules modules_install lib tools install uninstall test test-host \
        test-kernel test-kernels second-kernel demo fuzz bench clean kernel host sanitize judged fuzzers

help: ## Show this list
	@awk -F ':.*## ' '/^[a-z_-]+:.*## / { printf "  make %-18s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)
	@echo
	@sed -n '/^# Only/,/^$$/s/^# \{0,1\}//p' $(firstword $(MAKEFILE_LIST))

all: modules lib ## Build the kernel modules and the host library

setup: ## Install the Debian packages that are missing (GROUPS= of scripts/packages.txt)
	scripts/setup $(GROUPS)

modules: kernel ## Build the driver and the board's modules into build/modules
	scripts/build-modules build/modules

modules_install: modules ## Install the modules into the kernel's module tree (INSTALL_MOD_PATH=)
	$(MAKE) -C $(KDIR) M=$(CURDIR)/build/modules/board modules_install
	$(MAKE) -C $(KDIR) M=$(CURDIR)/build/modules/driver modules_install

lib: ## Build the driver as a host library, build/host/libm7_cpldjtag_drv.a
	$(NEED) lib
	cmake --preset library -B $(LIB_TREE) -DM7_SANITIZE=$(if $(SANITIZE),ON,OFF)
	+cmake --build $(LIB_TREE) $(PARALLEL) --target m7_cpldjtag_drv

tools: ## Build the command line tool, build/host/tvb
	$(NEED) lib tools
	cmake --preset tool
	+$(BUILD) tool $(PARALLEL)

install: ## Install the tool and the host library, below PREFIX=/usr/local (and DESTDIR=)
	$(NEED) lib tools
	cmake --preset tool -DCMAKE_INSTALL_PREFIX=$(PREFIX)
	+$(BUILD) tool $(PARALLEL)
	scripts/install build/host

uninstall: ## Remove what `make install` with the same PREFIX and DESTDIR has installed
	scripts/install --remove build/host

test: ## Run every test: host, sanitized, kernel in QEMU, tool, install, checks
	$(SETUP) lib tools test fuzz modules qemu judges docs
	+$(MAKE) --no-print-directory -j$(JOBS) host sanitize modules second-kernel
	$(TEST) -j$(JOBS)

test-host: host ## Run the host tests only
	$(TEST) -j$(JOBS) -L host -LE sanitized

test-kernels: host ## Run them on all kernels of scripts/kernels.txt, and keep the table in docs/
	$(NEED) modules qemu kernels
	tests/kernel/matrix --write docs/kernels.md

test-kernel: host modules second-kernel ## Run the tests on the real kernel in QEMU only
	$(NEED) qemu
	$(TEST) -L kernel

demo: ## Watch the driver program, verify and refuse a simulated CPLD on Linux 5.10
	$(SETUP) lib modules qemu
	+$(MAKE) --no-print-directory modules
	cmake --preset library
	+cmake --build build/host $(PARALLEL) --target make_demo_file
	demo/run

fuzz: fuzzers judged ## Fuzz the tool and the driver for FUZZ_SECONDS=60, then judge FUZZ_FILES=10000 files
	tests/fuzz/run build/sanitize
	tests/judges/judge_random build/host/tvb build/host/tests/judges/bitbang_server \
	  tests/judges/bypass.json $(FUZZ_FILES) $$(date +%s)00000

bench: host ## Measure tvb compile on a file of 100 MB
	cmake --build build/host --target bench_compile

clean: ## Remove everything that was built (the fetched kernel stays: rm -r build does it all)
	scripts/clean

# The kernel of which `make test` runs a few cases, with its modules.
second-kernel: SECOND = build/kernels/arm64-6.1
second-kernel:
	$(NEED) modules
	$(FETCH) $(SECOND) $(notdir $(SECOND))
	env -u KDIR -u ARCH -u CROSS_COMPILE KERNEL=$(CURDIR)/$(SECOND) scripts/build-modules $(SECOND)-modules

kernel:
	$(NEED) modules
	$(if $(KERNEL_IS_FETCHED),$(FETCH) build/kernel)

host:
	$(NEED) lib test tools
	cmake --preset host
	+$(BUILD) host $(PARALLEL)

sanitize:
	$(NEED) lib test tools fuzz
	cmake --preset sanitize
	+$(BUILD) sanitize $(PARALLEL)

judged:
	$(NEED) lib test tools judges
	cmake --preset host
	+$(BUILD) host $(PARALLEL) --target tvb_tool bitbang_server

fuzzers:
	$(NEED) lib test tools fuzz
	cmake --preset sanitize
	+$(BUILD) fuzz $(PARALLEL)
