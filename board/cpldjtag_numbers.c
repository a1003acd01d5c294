// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/* Lines by their global GPIO numbers, which newer kernels may be built without. */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/gpio.h>
#include <linux/kernel.h>
#include <linux/module.h>

#include "cpldjtag_internal.h"

static int tck = -1;
module_param(tck, int, 0444);
MODULE_PARM_DESC(tck, "GPIO number of TCK");
static int tms = -1;
module_param(tms, int, 0444);
MODULE_PARM_DESC(tms, "GPIO number of TMS");
static int tdi = -1;
module_param(tdi, int, 0444);
MODULE_PARM_DESC(tdi, "GPIO number of TDI (of the chain; an output of the board)");
static int tdo = -1;
module_param(tdo, int, 0444);
MODULE_PARM_DESC(tdo, "GPIO number of TDO (of the chain; an input of the board)");

static const int *const numbers[] = {
	[CPLDJTAG_TCK] = &tck,
	[CPLDJTAG_TMS] = &tms,
	[CPLDJTAG_TDI] = &tdi,
	[CPLDJTAG_TDO] = &tdo,
};

bool cpldjtag_numbers_given(void)
{
	return tck >= 0 || tms >= 0 || tdi >= 0 || tdo >= 0;
}

#ifdef GPIOF_OUT_INIT_LOW

static const unsigned long flags[] = {
	[CPLDJTAG_TCK] = GPIOF_OUT_INIT_LOW,
	[CPLDJTAG_TMS] = GPIOF_OUT_INIT_HIGH,
	[CPLDJTAG_TDI] = GPIOF_OUT_INIT_HIGH,
	[CPLDJTAG_TDO] = GPIOF_IN,
};

int cpldjtag_number_request(enum cpldjtag_signal signal, const char *label, u32 *number,
			    struct gpio_desc **desc)
{
	int gpio = *numbers[signal];
	int error;

	if (gpio < 0) {
		pr_err("%s= is missing\n", cpldjtag_signal_names[signal]);
		return -EINVAL;
	}
	/* gpiolib would warn about an invalid number. */
	error = gpio_is_valid(gpio) ? gpio_request_one(gpio, flags[signal], label) : -EINVAL;
	/* Nobody would try again later. */
	if (error == -EPROBE_DEFER)
		error = -ENODEV;
	if (error) {
		pr_err("GPIO %d is not available for %s: error %d\n", gpio, label, error);
		return error;
	}
	*number = gpio;
	*desc = gpio_to_desc(gpio);
	return 0;
}

#else

int cpldjtag_number_request(enum cpldjtag_signal signal, const char *label, u32 *number,
			    struct gpio_desc **desc)
{
	pr_err("%s=%d: this kernel has no GPIO numbers, give lines= instead\n",
	       cpldjtag_signal_names[signal], *numbers[signal]);
	return -EOPNOTSUPP;
}

#endif
