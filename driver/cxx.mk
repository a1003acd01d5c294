# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# kbuild's missing rule: an object of a module from a C++ source.
#
# kbuild compiles C and assembler only. A Kbuild file that includes this one may list objects
# whose sources end in .cc; they are compiled by the C++ compiler that belongs to the kernel's C
# compiler, with the kernel's own code generation flags. It stands in a file of its own, included
# by Kbuild, because kbuild is run directly by many (DKMS, Buildroot, a plain make -C KDIR M=...),
# past every wrapper Makefile.
#
# An including Kbuild may set, before or after the include:
#   cxxflags-y          more flags for all of its C++ sources (as ccflags-y is for C)
#   CXXFLAGS_name.o     more flags for one object
#   KASAN_SANITIZE, UBSAN_SANITIZE, GCOV_PROFILE   as for C: n leaves the instrumentation out
# and a caller may give CXX= on make's command line. The C sources of the same folder get the same
# warnings and stack records by: ccflags-y += $(c-flags)

# --- the compiler ---------------------------------------------------------------------------------
# The one beside $(CC), whatever path, target prefix, version suffix or launcher that has. An
# environment's CXX is the machine's own compiler and would build for the wrong processor.
ifneq ($(origin CXX),command line)
CXX = $(foreach w,$(CC),$(if $(findstring /,$(w)),$(dir $(w)))$(subst clang,clang++,$(subst \
      gcc,g++,$(notdir $(w)))))
endif

# --- flags of the kernel that do not apply --------------------------------------------------------
# C's own language level and warnings, which g++ refuses or complains of on every file:
cxx-refused := -std=% -Wstrict-prototypes -Werror=strict-prototypes -Wmissing-prototypes \
               -Wold-style% -Wno-pointer-sign -Wdeclaration-after-statement \
               -Werror=implicit-function-declaration -Werror=implicit-int \
               -Werror=incompatible-pointer-types -Werror=designated-init \
               -Wno-override-init -Wno-unterminated-string-initialization
# The kernel marks a fall-through by a macro of its headers, which C++ sources do not see:
cxx-refused += -Wimplicit-fallthrough%
# Exceptions to warnings that -Wall below is meant to give in full:
cxx-refused += -Wno-format-security -Wno-stringop%
# Compiler plugins of the kernel work on its C types:
cxx-refused += -fplugin%

# --- flags of our own -----------------------------------------------------------------------------
cxx-flags := -std=gnu++17
# No C++ library and no hosted start-up in a kernel; main() and the like mean nothing here:
cxx-flags += -ffreestanding
# The kernel has no unwinder: no landing pads, and no tables for them either.
cxx-flags += -fno-exceptions -fno-unwind-tables -fno-asynchronous-unwind-tables
# No type information, and so no reference to the C++ library's type_info objects:
cxx-flags += -fno-rtti
# A function-local static must not call the C++ library's lock:
cxx-flags += -fno-threadsafe-statics
# Nor an object with static lifetime register its destructor with it:
cxx-flags += -fno-use-cxa-atexit
# Where modules carry type information (BTF), pahole makes it of their debug information and gives up
# at the first reference of C++:
cxx-flags += $(if $(CONFIG_DEBUG_INFO_BTF_MODULES),-g0)
# Warnings, all of them:
cxx-flags += -Wall -Wextra
# A .su file beside each object names the stack frame of each function (see check-module):
cxx-flags += -fstack-usage

# The same for the C sources, less what the kernel's own headers are full of (they are no system
# headers to the compiler):
c-flags := -Wall -Wextra -fstack-usage
c-flags += -Wno-sign-compare -Wno-type-limits -Wno-unused-parameter -Wno-missing-field-initializers

# --- instrumentation, which kbuild hands to C sources only ----------------------------------------
# Empty on a kernel without it. GCOV is on where the folder or the whole kernel asks for it.
# $(call cxx-wanted,NAME,DEFAULT): not empty unless this object's or folder's NAME says n.
cxx-wanted = $(patsubst n%,,$($(1)_$(basetarget).o)$($(1))$(2))
cxx-sanitize = $(if $(call cxx-wanted,KASAN_SANITIZE,y),$(CFLAGS_KASAN)) \
               $(if $(call cxx-wanted,UBSAN_SANITIZE,y),$(CFLAGS_UBSAN)) \
               $(if $(call cxx-wanted,GCOV_PROFILE,$(CONFIG_GCOV_PROFILE_ALL)),$(CFLAGS_GCOV))

# --- the rule -------------------------------------------------------------------------------------
# The dependency file is what if_changed_dep turns into the object's .cmd file, so that an object
# is made again when its flags or any header that it includes have changed.
quiet_cmd_cxx_o_cc = CXX [M]  $@
      cmd_cxx_o_cc = $(CXX) -Wp,-MMD,$(depfile) $(KBUILD_CPPFLAGS) \
                     $(filter-out $(cxx-refused),$(KBUILD_CFLAGS)) \
                     $(filter-out $(cxx-refused),$(KBUILD_CFLAGS_MODULE) $(CFLAGS_MODULE)) \
                     $(cxx-flags) $(cxx-sanitize) $(cxxflags-y) $(CXXFLAGS_$(notdir $@)) \
                     -c -o $@ $<

$(obj)/%.o: $(src)/%.cc FORCE
	$(call if_changed_dep,cxx_o_cc)
