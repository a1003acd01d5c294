# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# The front door. CMakePresets.json has the build trees of the host side.
#
# Only `make bench`, `bench-kernel`, `demo`, `deb`, `test` and `test-deb` install what they miss, of the
# Debian packages in scripts/packages.txt. Every other target names it, and `make setup` installs it.
# What builds modules or boots a kernel fetches the distribution's Linux 5.10 for arm64, once, into
# build/.
#
# Variables:
#   BUILD=DIR          where everything is built instead of in build/ (but for the tests and the demo)
#   DESTDIR=, PREFIX=  install, uninstall: a staging folder, and where below it (/usr/local)
#   GROUPS=            setup: these groups of scripts/packages.txt only
#   KDIR=DIR           build against this kernel tree instead of the fetched one (or KERNEL_SRC=)
#   ARCH=, CROSS_COMPILE=   of that tree; what it is for and Debian's compiler where not given;
#                      tools ARCH=arm64: for a board
#   CC=, LLVM=1, O=, W=1, C=1, SIM=1 ...   modules, modules_install: as kbuild has them
#   INSTALL_MOD_PATH=  modules_install: the root of the board's file system
#   QUICK=1            bench: small files and few rounds; docs/ stays as it is
#   SANITIZE=1         lib: with the address and undefined-behaviour sanitizers
#   M7_SETUP=no        install nothing, fetch nothing, look for nothing

BUILD := build
# make's functions take a path with a space for two, so these stay as they were given
KERNEL ?= $(BUILD)/kernel
ifeq ($(origin KDIR),undefined)
KDIR := $(KERNEL_SRC)
endif
KERNEL_IS_FETCHED := $(if $(KDIR)$(filter-out file,$(origin KERNEL)),,yes)

# What of kbuild's variables stands on the command line goes on to it.
KBUILD_NAMES := CC CXX LD AR NM STRIP OBJCOPY HOSTCC LLVM LLVM_IAS O W C CF KCFLAGS SIM PAHOLE \
                INSTALL_MOD_PATH INSTALL_MOD_DIR INSTALL_MOD_STRIP DEPMOD KBUILD_MODPOST_WARN
KBUILD_GIVEN = $(foreach v,$(KBUILD_NAMES),$(if $(filter command,$(origin $(v))),'$(v)=$($(v))'))
BUILD_MODULES = KERNEL="$(KERNEL)" scripts/build-modules

JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
FUZZ_FILES ?= 10000
SETUP := $(if $(filter no,$(M7_SETUP)),true,scripts/setup)
NEED := $(SETUP) --check
FETCH := $(if $(filter no,$(M7_SETUP)),true,scripts/fetch-kernel)
LIB_TREE := $(BUILD)/$(if $(SANITIZE),lib-sanitize,host)

# A make that hands out jobs hands them to the build tools as well.
PARALLEL = $(if $(findstring jobserver,$(MAKEFLAGS)),,-j$(JOBS))
CMAKE_BUILD = cmake --build --preset
TOOL_BUILD = cmake --build "$(BUILD)/host" $(PARALLEL) --target m7_cpldjtag_drv tvb_tool
TOOL_TARGET = $(if $(filter command,$(origin ARCH)),$(or $(TOOL_$(ARCH)),$(error \
              make tools knows ARCH=arm64 only)),tool-host)
TOOL_arm64 = tool-arm64
TEST = ctest --preset host $(CTEST_ARGS)

export KDIR DESTDIR PREFIX

.DEFAULT_GOAL := all

.PHONY: help all setup modules modules_install lib tools install uninstall dist deb test test-host \
        test-deb test-kernel test-kernels second-kernel kernel-root tool-host tool-arm64 demo fuzz bench bench-kernel bench-record clean kernel host bench-tree sanitize judged fuzzers

help: ## Show this list
	@awk -F ':.*## ' '/^[a-z_-]+:.*## / { printf "  make %-18s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)
	@echo
	@sed -n '/^# Only/,/^$$/s/^# \{0,1\}//p' $(firstword $(MAKEFILE_LIST))

all: ## Build the kernel modules and the host library
	$(NEED) $(if $(KERNEL_IS_FETCHED),modules) lib
	+@$(MAKE) --no-print-directory modules lib

setup: ## Install the Debian packages that are missing (GROUPS= of scripts/packages.txt)
	scripts/setup $(GROUPS)

modules: kernel ## Build the driver and the board's modules into build/modules
	$(BUILD_MODULES) "$(BUILD)/modules" $(KBUILD_GIVEN)

modules_install: kernel ## Install the modules into the kernel's module tree (INSTALL_MOD_PATH=)
	$(BUILD_MODULES) --install "$(BUILD)/modules" $(KBUILD_GIVEN)

lib: ## Build the driver as a host library, build/host/libm7_cpldjtag_drv.a
	$(NEED) lib
	cmake --preset library -B "$(LIB_TREE)" -DM7_SANITIZE=$(if $(SANITIZE),ON,OFF)
	+cmake --build "$(LIB_TREE)" $(PARALLEL) --target m7_cpldjtag_drv

tools: ## Build the command line tool, build/host/tvb (ARCH=arm64: static, build/tool-arm64/tvb)
	+@$(MAKE) --no-print-directory $(TOOL_TARGET)

tool-host:
	$(NEED) lib tools
	cmake --preset tool -B "$(BUILD)/host"
	+$(TOOL_BUILD)

tool-arm64:
	$(NEED) lib tools board
	cmake --preset board -B "$(BUILD)/tool-arm64"
	+cmake --build "$(BUILD)/tool-arm64" $(PARALLEL) --target tvb_tool
	@stat -c '%n: %s bytes' "$(BUILD)/tool-arm64/tvb"

install: ## Install the tool and the host library, below PREFIX=/usr/local (and DESTDIR=)
	$(NEED) lib tools
	cmake --preset tool -B "$(BUILD)/host" -DCMAKE_INSTALL_PREFIX=$(PREFIX)
	+$(TOOL_BUILD)
	scripts/install "$(BUILD)/host"

uninstall: ## Remove what `make install` with the same PREFIX and DESTDIR has installed
	scripts/install --remove "$(BUILD)/host"

dist: ## Write the sources of a release, as committed, to build/dist
	scripts/make-dist "$(BUILD)/dist"

deb: ## Build the Debian packages, of what is committed, into build/deb
	$(SETUP) lib tools deb
	scripts/make-deb "$(BUILD)/deb"

test: ## Run every test: host, sanitized, kernel in QEMU, tool, install, checks
	$(SETUP) lib tools board test fuzz modules qemu judges docs updaters
	+$(MAKE) --no-print-directory -j$(JOBS) host sanitize modules second-kernel kernel-root tool-arm64
	$(TEST) -j$(JOBS)

test-host: host ## Run the host tests only
	$(TEST) -j$(JOBS) -L host -LE sanitized

test-kernels: host tool-arm64 ## Run them on all kernels of scripts/kernels.txt, and keep the table in docs/
	$(NEED) modules qemu kernels
	tests/kernel/matrix --write docs/kernels.md

test-deb: ## Try the Debian packages in clean systems of two releases, and their modules in QEMU
	$(IN_BUILD)
	$(SETUP) lib tools test deb modules qemu kernels
	+$(MAKE) --no-print-directory deb
	cmake --preset host
	+$(CMAKE_BUILD) host $(PARALLEL) --target tvb_tool make_files
	$(FETCH) build/kernels/$(DEB_KERNEL) $(DEB_KERNEL)
	KERNEL=build/kernels/$(DEB_KERNEL) tests/deb/check bookworm
	tests/deb/check trixie

# The kernel that the packages' modules are run on, of the first release.
test-deb: DEB_KERNEL = $(shell dpkg --print-architecture)-6.1

test-kernel: host modules second-kernel kernel-root tool-arm64 ## Run the tests on the real kernel in QEMU only
	$(NEED) qemu updaters
	$(TEST) -L kernel

demo: ## Watch a simulated CPLD being updated on Linux 5.10, and what can go wrong
	$(IN_BUILD)
	$(SETUP) lib tools board modules qemu
	+$(MAKE) --no-print-directory modules tool-arm64
	cmake --preset library
	+cmake --build build/host $(PARALLEL) --target make_demo_file
	demo/run

fuzz: fuzzers judged ## Fuzz the tool and the driver for FUZZ_SECONDS=60, then judge FUZZ_FILES=10000 files
	tests/fuzz/run build/sanitize
	tests/judges/judge_random build/host/tvb build/host/tests/judges/bitbang_server \
	  tests/judges/bypass.json $(FUZZ_FILES) $$(date +%s)00000

bench: ## Measure the driver and the tool, and OpenOCD beside them, for docs/performance.md
	$(IN_BUILD)
	$(SETUP) lib tools test bench
	+@$(MAKE) --no-print-directory bench-tree
	tests/bench/run $(if $(QUICK),--quick) build/host build/bench$(if $(QUICK),-quick)
	$(if $(QUICK),,tests/bench/report build/bench docs)

bench-record: ## Record the instructions that make test holds the code to
	$(IN_BUILD)
	$(SETUP) lib tools test
	+@$(MAKE) --no-print-directory bench-tree
	tests/bench/guard --record build/host

bench-kernel: ## Count the instructions of a TCK period on Linux 5.10, and of OpenOCD's, for docs/
	$(IN_BUILD)
	$(SETUP) lib tools test modules qemu
	+@$(MAKE) --no-print-directory modules
	cmake --preset host
	+$(CMAKE_BUILD) host $(PARALLEL) --target tvb_tool make_files
	$(if $(filter no,$(M7_SETUP)),,scripts/fetch-openocd build/kernel-openocd)
	KERNEL="$(KERNEL)" OPENOCD=build/kernel-openocd tests/bench/kernel --write docs/performance-kernel.md build/bench

clean: ## Remove everything that was built (the fetched kernel stays: rm -r build does it all)
	scripts/clean "$(BUILD)"

# The kernel of which `make test` runs a few cases, with its modules.
second-kernel: SECOND = build/kernels/arm64-6.1
second-kernel:
	$(NEED) modules
	$(FETCH) $(SECOND) $(notdir $(SECOND))
	env -u KDIR -u ARCH -u CROSS_COMPILE KERNEL=$(CURDIR)/$(SECOND) scripts/build-modules $(SECOND)-modules

# The file system of a board of the fetched kernel, with updaters.
kernel-root: kernel
	$(if $(filter no,$(M7_SETUP)),,$(if $(KERNEL_IS_FETCHED),scripts/fetch-root "$(KERNEL)-root" "$(KERNEL)"))

# A tree of one's own has compilers of its own.
kernel:
	$(if $(KERNEL_IS_FETCHED),$(NEED) modules)
	$(if $(KERNEL_IS_FETCHED),$(FETCH) "$(KERNEL)")

# Their programs find each other there.
IN_BUILD = $(if $(filter-out build,$(BUILD)),$(error the tests and the demo are made in build/ only, not in $(BUILD)))

host:
	$(IN_BUILD)
	$(NEED) lib test tools
	cmake --preset host
	+$(CMAKE_BUILD) host $(PARALLEL)

bench-tree:
	cmake --preset host
	+$(CMAKE_BUILD) host $(PARALLEL) --target tvb_tool driver_bench guarded_load

sanitize:
	$(IN_BUILD)
	$(NEED) lib test tools fuzz
	cmake --preset sanitize
	+$(CMAKE_BUILD) sanitize $(PARALLEL)

judged:
	$(IN_BUILD)
	$(NEED) lib test tools judges
	cmake --preset host
	+$(CMAKE_BUILD) host $(PARALLEL) --target tvb_tool bitbang_server

fuzzers:
	$(IN_BUILD)
	$(NEED) lib test tools fuzz
	cmake --preset sanitize
	+$(CMAKE_BUILD) fuzz $(PARALLEL)
