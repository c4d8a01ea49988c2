// Host HIDL runtime: fast message queues are not used by this project's
// interfaces; generated headers include this file unconditionally.
#pragma once

#include <hidl/HidlSupport.h>
