# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# The front door. Every target brings what it needs: missing Debian packages (scripts/packages.txt)
# and, for whatever builds modules or boots a kernel, the distribution's Linux 5.10 for arm64.
#
# Variables:
#   KDIR=DIR           build against this kernel tree instead of the fetched one (or KERNEL_SRC=)
#   ARCH=, CROSS_COMPILE=   of that tree; arm64 and the Debian cross compiler where not given
#   SANITIZE=1         lib: with the address and undefined-behaviour sanitizers
#   M7_SETUP=no        install nothing, fetch nothing

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
SETUP := $(if $(filter no,$(M7_SETUP)),true,scripts/setup)
FETCH := $(if $(filter no,$(M7_SETUP)),true,scripts/fetch-kernel)
KERNEL_IS_FETCHED := $(filter $(CURDIR)/build/kernel/headers,$(KDIR))
LIB_DIR := $(if $(SANITIZE),build/host-sanitize,build/host)

export KDIR ARCH CROSS_COMPILE

.DEFAULT_GOAL := all

.PHONY: help all modules modules_install lib tools test test-host test-kernel demo fuzz bench clean \
        kernel host host-sanitize fuzzers

help: ## Show this list
	@awk -F ':.*## ' '/^[a-z_-]+:.*## / { printf "  make %-18s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)
	@echo
	@sed -n '/^# Variables:/,/^$$/s/^# \{0,1\}//p' $(firstword $(MAKEFILE_LIST))

all: modules lib ## Build the kernel modules and the host library

modules: kernel ## Build the driver and the board's modules into build/modules
	scripts/build-modules build/modules

modules_install: modules ## Install the modules into the kernel's module tree (INSTALL_MOD_PATH=)
	$(MAKE) -C $(KDIR) M=$(CURDIR)/build/modules/board modules_install
	$(MAKE) -C $(KDIR) M=$(CURDIR)/build/modules/driver modules_install

lib: ## Build the driver as a host library, build/host/libm7_cpldjtag_drv.a
	$(SETUP) lib
	cmake -S . -B $(LIB_DIR) -DM7_SANITIZE=$(if $(SANITIZE),ON,OFF)
	cmake --build $(LIB_DIR) -j$(JOBS) --target m7_cpldjtag_drv

tools: ## Build the command line tool, build/host/tvb
	$(SETUP) lib tools
	cmake -S . -B build/host -DM7_TOOLS=ON
	cmake --build build/host -j$(JOBS) --target tvb_tool

test: host host-sanitize fuzzers modules ## Run every test: host, sanitized, kernel in QEMU, tool, checks
	$(SETUP) qemu judges docs
	printf 'subdirs(host host-sanitize)\n' >build/CTestTestfile.cmake
	ctest --test-dir build --output-on-failure -j$(JOBS) $(CTEST_ARGS)

test-host: host ## Run the host tests only
	ctest --test-dir build/host --output-on-failure -j$(JOBS) -L host $(CTEST_ARGS)

test-kernel: host modules ## Run the tests on the real kernel in QEMU only
	$(SETUP) qemu
	ctest --test-dir build/host --output-on-failure -L kernel $(CTEST_ARGS)

demo: modules ## Watch the driver program, verify and refuse a simulated CPLD on Linux 5.10
	$(SETUP) qemu lib
	cmake -S . -B build/host
	cmake --build build/host -j$(JOBS) --target make_demo_file
	demo/run

fuzz: fuzzers ## Fuzz the tool and the driver for FUZZ_SECONDS=60
	tests/fuzz/run build/fuzz

bench: host ## Measure tvb compile on a file of 100 MB
	cmake --build build/host --target bench_compile

clean: ## Remove everything that was built (the fetched kernel stays: rm -r build does it all)
	scripts/clean

kernel:
	$(SETUP) modules
	$(if $(KERNEL_IS_FETCHED),$(FETCH) build/kernel)

host:
	$(SETUP) lib test tools
	cmake -S . -B build/host -DM7_SANITIZE=OFF -DM7_TESTS=ON
	cmake --build build/host -j$(JOBS)

fuzzers:
	$(SETUP) lib tools fuzz
	CC=clang CXX=clang++ cmake -S . -B build/fuzz -DM7_FUZZ=ON
	cmake --build build/fuzz -j$(JOBS) --target fuzzers

host-sanitize:
	$(SETUP) lib test tools
	cmake -S . -B build/host-sanitize -DM7_SANITIZE=ON -DM7_TESTS=ON
	cmake --build build/host-sanitize -j$(JOBS)
