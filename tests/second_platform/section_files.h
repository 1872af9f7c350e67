#pragma once

#include "platform/core_utilities.h"
