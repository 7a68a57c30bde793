#pragma once

#include "QuillmereCore/Model/Training/Quality.h"  // IWYU pragma: export
