#include "tests/wire/byte_places.h"

const bool everyByte = false;
