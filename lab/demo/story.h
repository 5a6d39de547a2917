// SPDX-License-Identifier: Apache-2.0
// The main story of the switch, told with a lab of whole units.
#ifndef SWITCHCFG_LAB_DEMO_STORY_H
#define SWITCHCFG_LAB_DEMO_STORY_H

#include "lab/demo/stage.h"

namespace switchlab::demo {

// Throws Failed at the first check that does not hold.
void tell_story(Stage &stage, int units);

} // namespace switchlab::demo

#endif
