#pragma once

namespace ox::bench {

// What the figures were measured on and with: processor, load, system, compiler, libraries.
void printMachine();

// False in a build without optimisation, with assertions or with sanitizers.
bool isOptimised();

}  // namespace ox::bench
