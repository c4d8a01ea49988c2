// Sizes of the system property store, as bionic defines them, for the host build.
#pragma once

#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92
