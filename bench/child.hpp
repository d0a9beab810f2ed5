#pragma once

#include <map>
#include <string>
#include <vector>

#include "bench/figures.hpp"

// What is kept once in the life of a process can be measured cold only in a fresh one: the program
// starts itself again with "--child" and what to do.
namespace ox::bench {

// The numbers that a child measured, by name.
using Numbers = std::map<std::string, double>;

// Starts this program with "--child" and the arguments, on that store, and reads the numbers that
// it prints. Throws when it fails.
Numbers runChild(const std::string& store, const std::vector<std::string>& arguments);

// In the child: prints a number for the parent.
void tellParent(const char* name, double value);
// The seconds that the work took, and with them the most memory that this process ever held and
// what it allocated since the last stopwatch was started.
void tellSeconds(double seconds);
// In the parent.
Measured measuredBy(const Numbers& numbers, std::string note = {});

// The most memory that this process ever held, in bytes.
double peakMemory();

}  // namespace ox::bench
