// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

// The front door for a project that takes this one in: it links KestrinTamsileFilter and includes this file.
#include "dsp/MainAudioProcessor.h"
