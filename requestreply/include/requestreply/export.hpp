#pragma once

// Everything in the request-reply library is hidden unless it is marked as part of its interface.
#define ZEMTRA_EXPORT __attribute__((visibility("default")))
// Takes a member of an exported class out of the interface again.
#define ZEMTRA_HIDDEN __attribute__((visibility("hidden")))
