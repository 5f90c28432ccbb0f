#include "tests/host/foreign_plugin.h"
