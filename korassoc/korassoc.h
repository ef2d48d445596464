// Everything that a host of the library compiles against, in one include.

#pragma once

#include "korassoc/base/Export.h"
