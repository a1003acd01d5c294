// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * The chain's state in debugfs, directory "jtag_sim"; docs/ABI/testing/debugfs-jtag-sim describes
 * the files.
 */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/seq_file.h>
#include <linux/slab.h>
#include <linux/string.h>
#include <linux/uaccess.h>

#include "sim/config.h"
#include "sim_board.h"

/* A file: what reading shows and what writing does; null where it is refused. */
struct sim_file {
	const char *name;
	void (*show)(struct seq_file *to);
	int (*write)(const char *text);
};

static void show_part_fields(struct seq_file *to, const struct sim_device_config *device)
{
	const struct sim_field *field;

	seq_printf(to, ", " SIM_PART_NAME " %ux%u", device->rows, device->row_bits);
	for (field = sim_fields; field < sim_fields + SIM_FIELD_COUNT; field++) {
		if (field->place == SIM_IN_PART && field->kind == SIM_NUMBER)
			seq_printf(to, ", %s %u", field->name, sim_field_value(field, device));
	}
}

static void show_chain(struct seq_file *to)
{
	const struct sim_device_config *device;
	u32 i;

	for (i = 1; (device = sim_chain_device(sim_chain, i)); i++) {
		seq_printf(to, "%u:", i);
		if (device->idcode)
			seq_printf(to, " idcode 0x%08x by %u", device->idcode,
				   device->idcode_instruction);
		else
			seq_puts(to, " bypass");
		if (device->ir_bits != sim_fields[SIM_FIELD_IR].absent)
			seq_printf(to, ", ir %u", device->ir_bits);
		if (device->bypass_code)
			seq_printf(to, ", bypass code %u", device->bypass_code);
		if (device->rows)
			show_part_fields(to, device);
		seq_putc(to, '\n');
	}
}

static void show_state(struct seq_file *to)
{
	u32 i;

	seq_printf(to, "tap %s\n", sim_state_name(sim_chain_state(sim_chain)));
	seq_printf(to, "lines tck=%d tms=%d tdi=%d tdo=%d\n", sim_chain_read(sim_chain, SIM_TCK),
		   sim_chain_read(sim_chain, SIM_TMS), sim_chain_read(sim_chain, SIM_TDI),
		   sim_chain_read(sim_chain, SIM_TDO));
	for (i = 1; i <= sim_chain_device_count(sim_chain); i++)
		seq_printf(to, "%u: instruction 0x%02x status 0x%02x\n", i,
			   sim_chain_instruction(sim_chain, i), sim_chain_status(sim_chain, i));
}

static void show_counters(struct seq_file *to)
{
	const struct sim_counters *counters = sim_chain_counters(sim_chain);
	u32 state;

	for (state = 0; state < SIM_STATE_COUNT; state++)
		seq_printf(to, "%s %llu\n", sim_state_name(state), counters->clocks[state]);
	seq_printf(to, "tms-changes %llu\n", counters->tms_changes);
	seq_printf(to, "tdi-changes %llu\n", counters->tdi_changes);
	seq_printf(to, "ir-scans %llu\n", counters->ir_scans);
	seq_printf(to, "dr-scans %llu\n", counters->dr_scans);
}

static int clear_counters(const char *text)
{
	mutex_lock(&sim_lock);
	sim_chain_clear_counters(sim_chain);
	mutex_unlock(&sim_lock);
	return 0;
}

static void show_scan(struct seq_file *to, const struct sim_scan *scan)
{
	u32 bit;

	seq_printf(to, "%u %s bits %u idle %llu tdi ", scan->number,
		   scan->kind == SIM_SCAN_IR ? "IR" : "DR", scan->bits, scan->idle_clocks);
	for (bit = 0; bit < scan->bits; bit++)
		seq_putc(to, '0' + sim_scan_tdi(scan, bit));
	seq_puts(to, " tdo ");
	for (bit = 0; bit < scan->bits; bit++)
		seq_putc(to, '0' + sim_scan_tdo(scan, bit));
	seq_putc(to, '\n');
}

static void show_scans(struct seq_file *to)
{
	const struct sim_scan *scan;

	for (scan = sim_chain_first_scan(sim_chain); scan;
	     scan = sim_chain_next_scan(sim_chain, scan)) {
		/* The reader will come back with a larger buffer. */
		if (seq_has_overflowed(to))
			return;
		show_scan(to, scan);
	}
	if (sim_chain_dropped_scans(sim_chain))
		seq_printf(to, "dropped %llu\n", sim_chain_dropped_scans(sim_chain));
}

static int clear_scans(const char *text)
{
	mutex_lock(&sim_lock);
	sim_chain_clear_log(sim_chain);
	mutex_unlock(&sim_lock);
	return 0;
}

static void show_part(struct seq_file *to, u32 device)
{
	const struct sim_device_config *config = sim_chain_device(sim_chain, device);
	u32 row, i;

	for (row = 0; row < config->rows && !seq_has_overflowed(to); row++) {
		const u8 *bytes = sim_chain_row(sim_chain, device, row);

		seq_printf(to, "%u %u ", device, row);
		for (i = 0; i < DIV_ROUND_UP(config->row_bits, 8); i++)
			seq_printf(to, "%02x", bytes[i]);
		seq_putc(to, '\n');
	}
}

static void show_memory(struct seq_file *to)
{
	u32 device;

	for (device = 1; device <= sim_chain_device_count(sim_chain); device++)
		show_part(to, device);
}

static void show_faults(struct seq_file *to)
{
	struct sim_fault fault;
	const char *separator = "";
	char text[48];
	u32 kind;

	for (kind = 0; kind < SIM_FAULT_KIND_COUNT; kind++) {
		if (!sim_chain_fault(sim_chain, kind, &fault))
			continue;
		sim_fault_format(&fault, text, sizeof(text));
		seq_printf(to, "%s%s", separator, text);
		separator = ";";
	}
	seq_putc(to, '\n');
}

static int power_cycle(const char *text)
{
	mutex_lock(&sim_lock);
	sim_chain_power_cycle(sim_chain);
	mutex_unlock(&sim_lock);
	return 0;
}

static const struct sim_file files[] = {
	{"chain", show_chain, NULL},
	{"state", show_state, NULL},
	{"counters", show_counters, clear_counters},
	{"scans", show_scans, clear_scans},
	{"memory", show_memory, NULL},
	{"faults", show_faults, sim_set_faults},
	{"power", NULL, power_cycle},
};

static int show_file(struct seq_file *to, void *unused)
{
	const struct sim_file *file = to->private;

	mutex_lock(&sim_lock);
	file->show(to);
	mutex_unlock(&sim_lock);
	return 0;
}

/* The mode of a file does not stop root. */
static int open_file(struct inode *inode, struct file *file)
{
	const struct sim_file *sim_file = inode->i_private;

	if ((file->f_mode & FMODE_READ) && !sim_file->show)
		return -EACCES;
	if ((file->f_mode & FMODE_WRITE) && !sim_file->write)
		return -EACCES;
	return single_open(file, show_file, inode->i_private);
}

static ssize_t write_file(struct file *file, const char __user *from, size_t count, loff_t *pos)
{
	const struct sim_file *sim_file = file_inode(file)->i_private;
	char *text;
	int error;

	if (count > PAGE_SIZE)
		return -E2BIG;
	text = memdup_user_nul(from, count);
	if (IS_ERR(text))
		return PTR_ERR(text);
	error = sim_file->write(strim(text));
	kfree(text);
	return error ? error : count;
}

static const struct file_operations sim_file_fops = {
	.owner = THIS_MODULE,
	.open = open_file,
	.read = seq_read,
	.write = write_file,
	.llseek = seq_lseek,
	.release = single_release,
};

static struct dentry *dir;

void sim_state_add(void)
{
	size_t i;

	dir = debugfs_create_dir("jtag_sim", NULL);
	for (i = 0; i < ARRAY_SIZE(files); i++)
		debugfs_create_file(files[i].name,
				    (files[i].show ? 0400 : 0) | (files[i].write ? 0200 : 0), dir,
				    (void *)&files[i], &sim_file_fops);
}

void sim_state_remove(void)
{
	debugfs_remove_recursive(dir);
}
