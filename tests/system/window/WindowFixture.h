// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include "support/Desktop.h"
#include "system/window/ModuleWindow.h"

/** The places of things in the window, at scale 1. */
namespace places
{
inline constexpr ModuleWindow::Place hpFreq { 68, 127 };
inline constexpr ModuleWindow::Place hpReso { 68, 277 };
inline constexpr ModuleWindow::Place lpFreq { 195, 127 };
inline constexpr ModuleWindow::Place lpReso { 195, 277 };
inline constexpr ModuleWindow::Place offsetField { 449, 98 };
inline constexpr ModuleWindow::Place randomize { 449, 151 };
inline constexpr ModuleWindow::Place showLfos { 17, 529 };
inline constexpr ModuleWindow::Place frequencer { 144, 529 };
} // namespace places

inline constexpr ModuleWindow::Size narrow { 266, 546 };
inline constexpr ModuleWindow::Size wide { 520, 546 };
