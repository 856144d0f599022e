// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/scenario/Dice.h"

namespace scenario
{

std::uint32_t Dice::word() { return (std::uint32_t) engine(); }

double Dice::unit() { return (double) word() / 4294967296.0; }

bool Dice::chance (double probability) { return unit() < probability; }

int Dice::below (int count) { return (int) (unit() * count); }

double Dice::between (double low, double high) { return low + (high - low) * unit(); }

float Dice::position() { return (float) unit(); }

} // namespace scenario
