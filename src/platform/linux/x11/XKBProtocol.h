#pragma once

// The header has a member of that name.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
