#include "platform/High.hpp"
