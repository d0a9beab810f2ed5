#pragma once

#include <string>

#include "oxcontacts/edit/person_text.hpp"

namespace ox::program {

// The person's text as YAML: every property in its place, those without a value as an empty line.
std::string yamlOf(const PersonText& text);
// Throws a CommandError (kUsage) that names the line and what is wrong with it.
PersonText readYaml(const std::string& yaml);

}  // namespace ox::program
