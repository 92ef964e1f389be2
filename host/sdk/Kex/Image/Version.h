#pragma once

/// Version of this SDK as text; a plug-in puts it in the build stamp of its registration record.
#define KEX_IMAGE_VERSION "1.0"

/// Text for Description::buildStamp: the day the plug-in was compiled and the SDK it was compiled for,
/// such as "Mar  4 2025 for 1.0".
#define KEX_IMAGE_BUILD_STAMP __DATE__ " for " KEX_IMAGE_VERSION
