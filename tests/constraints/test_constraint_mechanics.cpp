#include "tests/support/ModelFixture.h"
