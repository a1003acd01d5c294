// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "framework.h"

#include <errno.h>
#include <linux/gpio/driver.h>
#include <string.h>

#include "board/cpldjtag_internal.h"

struct gpio_desc {
  enum sim_line line;
};

static struct gpio_desc descs[CPLDJTAG_SIGNALS] = {
    [CPLDJTAG_TCK] = {SIM_TCK},
    [CPLDJTAG_TMS] = {SIM_TMS},
    [CPLDJTAG_TDI] = {SIM_TDI},
    [CPLDJTAG_TDO] = {SIM_TDO},
};

static struct gpio_chip gpios = {.label = "jtag_sim"};
static struct sim_chain *chain;
static struct framework_sets sets[CPLDJTAG_SIGNALS];
static int pin_levels[CPLDJTAG_SIGNALS];

extern bool *const parameter_skip_same_level;
static struct device device;

/* The driver's only operation. */
s32 TvbToVec(struct download_context *context, const u8 *image, u32 length);

/* ---- gpiolib */

struct gpio_desc *gpiod_get(struct device *dev, const char *name, enum gpiod_flags flags) {
  int signal;

  for (signal = 0; signal < CPLDJTAG_SIGNALS; signal++) {
    if (!strcmp(name, cpldjtag_signal_names[signal]))
      return &descs[signal];
  }
  return NULL;
}

void gpiod_put(struct gpio_desc *desc) {}

int gpiod_direction_input(struct gpio_desc *desc) {
  return desc->line == SIM_TDO ? 0 : -EINVAL;
}

int gpiod_direction_output(struct gpio_desc *desc, int level) {
  if (desc->line == SIM_TDO)
    return -EINVAL;
  gpiod_set_value_cansleep(desc, level);
  return 0;
}

void gpiod_set_value_cansleep(struct gpio_desc *desc, int level) {
  const int signal = (int)(desc - descs);

  sets[signal].all++;
  sets[signal].repeated += level == pin_levels[signal];
  pin_levels[signal] = level;
  sim_chain_write(chain, desc->line, level);
}

int gpiod_get_value_cansleep(const struct gpio_desc *desc) {
  return sim_chain_read(chain, desc->line);
}

struct gpio_chip *gpiod_to_chip(const struct gpio_desc *desc) {
  return &gpios;
}

int desc_to_gpio(const struct gpio_desc *desc) {
  return (int)desc->line;
}

/* ---- the framework's other ways to its lines, which are not taken */

bool cpldjtag_numbers_given(void) {
  return false;
}

int cpldjtag_number_request(enum cpldjtag_signal signal, const char *label, u32 *number,
                            struct gpio_desc **desc) {
  return -EINVAL;
}

const char *cpldjtag_lookup_text(void) {
  return NULL;
}

/* ---- downloads */

int framework_serve(struct sim_chain *its_chain) {
  chain = its_chain;
  return cpldjtag_lines_request(&device);
}

void framework_skip_same_level(bool skips) {
  *parameter_skip_same_level = skips;
}

struct framework_sets framework_sets_of(const char *signal) {
  int i = 0;

  while (strcmp(signal, cpldjtag_signal_names[i]))
    i++;
  return sets[i];
}

int32_t framework_download(const uint8_t *image, uint32_t length) {
  struct download_context context = {
      .pins = &cpldjtag_pins,
      .pin_ops = &cpldjtag_pin_ops,
  };
  s32 result = cpldjtag_status_begin(&device, "image");

  if (result)
    return result;
  memset(sets, 0, sizeof(sets));
  cpldjtag_status_running();
  result = TvbToVec(&context, image, length);
  cpldjtag_status_played(result);
  cpldjtag_status_end(result == 1 ? 0 : -EIO);
  return result;
}

ptrdiff_t framework_attribute(const char *name, char *page) {
  struct attribute **attr;

  for (attr = cpldjtag_status_group.attrs; *attr; attr++) {
    /* It is the first member. */
    struct device_attribute *found = (struct device_attribute *)*attr;

    if (!strcmp((*attr)->name, name))
      return found->show(&device, found, page);
  }
  return -1;
}
