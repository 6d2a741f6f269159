#include "base/Low.hpp"

#include "platform/High.hpp"
