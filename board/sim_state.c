// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * The chain's state in debugfs, directory "jtag_sim"; docs/ABI/testing/debugfs-jtag-sim describes
 * the files.
 */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/mutex.h>
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

static void show_device_state(struct seq_file *to, u32 device)
{
	unsigned long flags;
	u32 instruction;
	u8 status;

	raw_spin_lock_irqsave(&sim_lock, flags);
	instruction = sim_chain_instruction(sim_chain, device);
	status = sim_chain_status(sim_chain, device);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
	seq_printf(to, "%u: instruction 0x%02x status 0x%02x\n", device, instruction, status);
}

static void show_state(struct seq_file *to)
{
	enum sim_state state;
	unsigned long flags;
	int levels[4];
	u32 i;

	raw_spin_lock_irqsave(&sim_lock, flags);
	state = sim_chain_state(sim_chain);
	for (i = 0; i < ARRAY_SIZE(levels); i++)
		levels[i] = sim_chain_read(sim_chain, i);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
	seq_printf(to, "tap %s\n", sim_state_name(state));
	seq_printf(to, "lines tck=%d tms=%d tdi=%d tdo=%d\n", levels[SIM_TCK], levels[SIM_TMS],
		   levels[SIM_TDI], levels[SIM_TDO]);
	for (i = 1; i <= sim_chain_device_count(sim_chain); i++)
		show_device_state(to, i);
}

static void show_counters(struct seq_file *to)
{
	struct sim_counters counters;
	unsigned long flags;
	u32 state;

	raw_spin_lock_irqsave(&sim_lock, flags);
	counters = *sim_chain_counters(sim_chain);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
	for (state = 0; state < SIM_STATE_COUNT; state++)
		seq_printf(to, "%s %llu\n", sim_state_name(state), counters.clocks[state]);
	seq_printf(to, "tms-changes %llu\n", counters.tms_changes);
	seq_printf(to, "tdi-changes %llu\n", counters.tdi_changes);
	seq_printf(to, "ir-scans %llu\n", counters.ir_scans);
	seq_printf(to, "dr-scans %llu\n", counters.dr_scans);
}

static int clear_counters(const char *text)
{
	unsigned long flags;

	raw_spin_lock_irqsave(&sim_lock, flags);
	sim_chain_clear_counters(sim_chain);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
	return 0;
}

/* A whole scan of the log does not change until the log is cleared, which this excludes. */
static DEFINE_MUTEX(scans_lock);

static void show_scan(struct seq_file *to, const struct sim_scan *scan)
{
	u32 bit;

	seq_printf(to, "%u %s bits %u idle %llu tdi ", scan->number,
		   scan->kind == SIM_SCAN_IR ? "IR" : "DR", scan->bits,
		   READ_ONCE(scan->idle_clocks));
	for (bit = 0; bit < scan->bits; bit++)
		seq_putc(to, '0' + sim_scan_tdi(scan, bit));
	seq_puts(to, " tdo ");
	for (bit = 0; bit < scan->bits; bit++)
		seq_putc(to, '0' + sim_scan_tdo(scan, bit));
	seq_putc(to, '\n');
}

/* The scan after @scan, or the first where that is null; null at the end. */
static const struct sim_scan *scan_after(const struct sim_scan *scan, u64 *dropped)
{
	unsigned long flags;

	raw_spin_lock_irqsave(&sim_lock, flags);
	scan = scan ? sim_chain_next_scan(sim_chain, scan) : sim_chain_first_scan(sim_chain);
	*dropped = sim_chain_dropped_scans(sim_chain);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
	return scan;
}

static void show_scans(struct seq_file *to)
{
	const struct sim_scan *scan = NULL;
	u64 dropped;

	mutex_lock(&scans_lock);
	/* After an overflow the reader will come back with a larger buffer. */
	while ((scan = scan_after(scan, &dropped)) && !seq_has_overflowed(to))
		show_scan(to, scan);
	if (dropped)
		seq_printf(to, "dropped %llu\n", dropped);
	mutex_unlock(&scans_lock);
}

static int clear_scans(const char *text)
{
	unsigned long flags;

	mutex_lock(&scans_lock);
	raw_spin_lock_irqsave(&sim_lock, flags);
	sim_chain_clear_log(sim_chain);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
	mutex_unlock(&scans_lock);
	return 0;
}

static void copy_of_row(u32 device, u32 row, u32 from, u8 *bytes, u32 count)
{
	unsigned long flags;

	raw_spin_lock_irqsave(&sim_lock, flags);
	memcpy(bytes, sim_chain_row(sim_chain, device, row) + from, count);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
}

static void show_row(struct seq_file *to, u32 device, u32 row, u32 size)
{
	u8 bytes[64];
	u32 from, count;

	seq_printf(to, "%u %u ", device, row);
	for (from = 0; from < size; from += count) {
		count = min_t(u32, size - from, sizeof(bytes));
		copy_of_row(device, row, from, bytes, count);
		seq_printf(to, "%*phN", (int)count, bytes);
	}
	seq_putc(to, '\n');
}

static void show_part(struct seq_file *to, u32 device)
{
	const struct sim_device_config *config = sim_chain_device(sim_chain, device);
	u32 row;

	for (row = 0; row < config->rows && !seq_has_overflowed(to); row++)
		show_row(to, device, row, DIV_ROUND_UP(config->row_bits, 8));
}

static void show_memory(struct seq_file *to)
{
	u32 device;

	for (device = 1; device <= sim_chain_device_count(sim_chain); device++)
		show_part(to, device);
}

static bool find_fault(enum sim_fault_kind kind, struct sim_fault *fault)
{
	unsigned long flags;
	bool found;

	raw_spin_lock_irqsave(&sim_lock, flags);
	found = sim_chain_fault(sim_chain, kind, fault);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
	return found;
}

static void show_faults(struct seq_file *to)
{
	struct sim_fault fault;
	const char *separator = "";
	char text[48];
	u32 kind;

	for (kind = 0; kind < SIM_FAULT_KIND_COUNT; kind++) {
		if (!find_fault(kind, &fault))
			continue;
		sim_fault_format(&fault, text, sizeof(text));
		seq_printf(to, "%s%s", separator, text);
		separator = ";";
	}
	seq_putc(to, '\n');
}

static int power_cycle(const char *text)
{
	unsigned long flags;

	raw_spin_lock_irqsave(&sim_lock, flags);
	sim_chain_power_cycle(sim_chain);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
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

	file->show(to);
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
