#include "compiler/Generator.h"

namespace tn61131::st {

void Optimise(Project& /*project*/) {}

}  // namespace tn61131::st
