#include "relaunch/Relaunch.hpp"

int main() { return tav::runRelaunchAfterInstall(); }
