#include "tests/integration/worker_read/ReaderFixture.h"
