// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * jtag_sim.ko: a simulated JTAG chain behind a GPIO chip of four lines, for a kernel that has no
 * chain to program. The chain and its faults are given as text (see sim/config.h):
 *
 *   insmod jtag_sim.ko "chain=bypass;idcode=0x0A014C35,part=64x128,erase=1000,program=50"
 *
 * In a device tree the chip is a node "quorlan,jtag-sim", see docs/bindings/; chain and faults are
 * given as always. The lines' numbers are in /sys/class/gpio/gpiochipN, the one whose label is
 * "jtag_sim"; the chain's state is in debugfs "jtag_sim" (sim_state.c says how it reads).
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/kernel.h>
#include <linux/mm.h>
#include <linux/module.h>
#include <linux/slab.h>

#include "sim/config.h"
#include "sim_board.h"

#define MAX_DEVICES 64

static char *chain = "idcode=0x0A014C35,part=64x128,erase=1000,program=50";
module_param(chain, charp, 0444);
MODULE_PARM_DESC(chain, "the chain's devices, the TDI end first");

static char *faults = "";
module_param(faults, charp, 0444);
MODULE_PARM_DESC(faults, "the chain's faults");

static unsigned int log_kib = 1024;
module_param(log_kib, uint, 0444);
MODULE_PARM_DESC(log_kib, "memory for the log of scans in KiB");

static int base = -1;
module_param(base, int, 0444);
MODULE_PARM_DESC(base, "number of the first GPIO line (-1: any)");

DEFINE_RAW_SPINLOCK(sim_lock);
struct sim_chain *sim_chain;

static int complain(const char *what, const char *text, const struct sim_text_error *error)
{
	pr_err("%s \"%s\": %s at character %zu\n", what, text, error->reason,
	       (size_t)error->position);
	return -EINVAL;
}

/* Sets sim_chain, which kvfree() releases. */
static int create_chain(const struct sim_device_config *devices, u32 count)
{
	const struct sim_config config = {
		.devices = devices,
		.device_count = count,
		.log_bytes = (sim_size)log_kib * 1024,
	};
	sim_size size = sim_chain_size(&config);
	void *memory;

	if (!size) {
		pr_err("chain \"%s\" is impossible\n", chain);
		return -EINVAL;
	}
	memory = kvzalloc(size, GFP_KERNEL);
	if (!memory)
		return -ENOMEM;
	sim_chain = sim_chain_create(memory, &config);
	return 0;
}

static int create_chain_of_text(void)
{
	struct sim_device_config *devices;
	struct sim_text_error error;
	u32 count;
	int result;

	devices = kcalloc(MAX_DEVICES, sizeof(*devices), GFP_KERNEL);
	if (!devices)
		return -ENOMEM;
	if (sim_config_parse(chain, devices, MAX_DEVICES, &count, &error)) {
		result = complain("chain", chain, &error);
	} else if (count > MAX_DEVICES) {
		pr_err("%u devices are too many, at most %u can be\n", count, MAX_DEVICES);
		result = -EINVAL;
	} else {
		result = create_chain(devices, count);
	}
	kfree(devices);
	return result;
}

/* Reads the faults that are set now, at most one of each kind. */
static u32 current_faults(struct sim_fault *list)
{
	u32 kind, count = 0;

	for (kind = 0; kind < SIM_FAULT_KIND_COUNT; kind++)
		count += sim_chain_fault(sim_chain, kind, &list[count]);
	return count;
}

static int apply_faults(const struct sim_fault *list, u32 count)
{
	u32 i;

	sim_chain_clear_faults(sim_chain);
	for (i = 0; i < count; i++) {
		if (sim_chain_set_fault(sim_chain, &list[i]))
			return -EINVAL;
	}
	return 0;
}

int sim_set_faults(const char *text)
{
	struct sim_fault old[SIM_FAULT_KIND_COUNT], new[SIM_FAULT_KIND_COUNT];
	struct sim_text_error error;
	unsigned long flags;
	u32 old_count, count;
	int result;

	if (sim_faults_parse(text, new, ARRAY_SIZE(new), &count, &error))
		return complain("faults", text, &error);
	if (count > ARRAY_SIZE(new))
		return -EINVAL;
	raw_spin_lock_irqsave(&sim_lock, flags);
	old_count = current_faults(old);
	result = apply_faults(new, count);
	if (result)
		apply_faults(old, old_count);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
	if (result)
		pr_err("faults \"%s\": the chain has no such device, row or scan\n", text);
	return result;
}

static int __init jtag_sim_init(void)
{
	int error;

	error = create_chain_of_text();
	if (error)
		return error;
	error = sim_set_faults(faults);
	if (!error)
		error = sim_chip_add(base);
	if (error) {
		kvfree(sim_chain);
		return error;
	}
	sim_state_add();
	return 0;
}

static void __exit jtag_sim_exit(void)
{
	sim_state_remove();
	sim_chip_remove();
	kvfree(sim_chain);
}

module_init(jtag_sim_init);
module_exit(jtag_sim_exit);
MODULE_LICENSE("Dual BSD/GPL");
MODULE_VERSION("v1.0");
MODULE_DESCRIPTION("A simulated JTAG chain as a GPIO chip");
