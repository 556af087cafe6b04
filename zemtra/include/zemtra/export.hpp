#pragma once

// Everything in the library of the typed front ends is hidden unless it is marked as part of its interface.
#define ZEMTRA_TYPED_EXPORT __attribute__((visibility("default")))
