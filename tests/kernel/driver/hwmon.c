// SPDX-License-Identifier: MIT OR GPL-2.0
/* The nodes of the hwmon directory. */
#include "reference.h"

#include <linux/hwmon.h>
#include <linux/sysfs.h>

struct sensor {
    struct device_attribute attribute;
    const char* format;
    int value; /* of the first adapter; the others have 1 more each */
};

static ssize_t sensor_show(struct device* device, struct device_attribute* attribute, char* text)
{
    const struct sensor* const sensor = container_of(attribute, struct sensor, attribute);
    const struct reference_adapter* const adapter = dev_get_drvdata(device);

    return sysfs_emit(text, sensor->format, sensor->value + (int)adapter->number);
}

#define SENSOR(name, text, number) \
    static struct sensor sensor_##name = {__ATTR(name, 0444, sensor_show, NULL), text, number}

SENSOR(temp1_input, "%d *C\n", 47);
SENSOR(fan0_input, "%d\n", 1650);
SENSOR(fan1_input, "%d\n", 1720);

static struct attribute* sensor_attrs[] = {
    &sensor_temp1_input.attribute.attr,
    &sensor_fan0_input.attribute.attr,
    &sensor_fan1_input.attribute.attr,
    NULL,
};
ATTRIBUTE_GROUPS(sensor);

int reference_hwmon_register(struct reference_adapter* adapter)
{
    return PTR_ERR_OR_ZERO(devm_hwmon_device_register_with_groups(adapter->drm.dev, REFERENCE_NAME,
                                                                  adapter, sensor_groups));
}
