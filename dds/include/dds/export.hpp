#pragma once

// Everything in the DDS layer's shared library is hidden unless it is marked as part of its API.
#define DDS_EXPORT __attribute__((visibility("default")))
