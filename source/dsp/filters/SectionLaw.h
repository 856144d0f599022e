// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** One frame through a second-order section in direct form II, whose law stands in SectionCascade.h.
    @tparam Lanes  StereoPair, or more than one of them */
template <typename Lanes>
[[nodiscard]] Lanes processSection (Lanes x, Lanes gain, Lanes feedback1, Lanes feedback2, Lanes numeratorMiddle,
                                    Lanes& w1, Lanes& w2) noexcept
{
    const auto w0 = w1 * feedback1 + feedback2 * w2 + x;
    const auto y = (numeratorMiddle * w1 + w0 + w2) * gain;
    w2 = w1;
    w1 = w0;
    return y;
}
