// Sounds of the program's folder, played beside everything else: a machine without sound, a missing file or
// a slow sound server is never noticed. Interface thread only.
#pragma once

// Starts the sound; one that still sounds begins anew.
void play_sound_file(const char* file);

// Ends the playing. Before the application object goes.
void end_sound();
