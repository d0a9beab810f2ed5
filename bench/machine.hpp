#pragma once

namespace ox::bench {

// What the figures were measured on and with: processor, load, system, compiler, libraries.
void printMachine();

// False in a build without optimisation, with assertions or with sanitizers.
bool isOptimised();

// What this process has used so far: processor time in seconds, bytes handed to the system to
// write. Steadier than the clock while the machine or its disk is busy with something else.
struct Used {
  double processor = 0;
  double written = 0;
};
Used usedSoFar();

}  // namespace ox::bench
