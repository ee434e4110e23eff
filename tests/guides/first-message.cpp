// The program of docs/guides/first-message.md.
#include "guide_first-message.h"
