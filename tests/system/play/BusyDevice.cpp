// SPDX-License-Identifier: AGPL-3.0-or-later
// A kind of device that ALSA loads by name, and that is always in use.
#include <cerrno>

#include <alsa/asoundlib.h>

extern "C" __attribute__ ((visibility ("default"))) int _snd_pcm_busy_open (snd_pcm_t**, const char*, snd_config_t*,
                                                                            snd_config_t*, snd_pcm_stream_t, int);

int _snd_pcm_busy_open (snd_pcm_t**, const char*, snd_config_t*, snd_config_t*, snd_pcm_stream_t, int)
{
    return -EBUSY;
}

// The version that ALSA looks for beside the function.
extern "C" __attribute__ ((visibility ("default"))) const char __snd_pcm_busy_open_dlsym_pcm_001;
const char __snd_pcm_busy_open_dlsym_pcm_001 = 0;
