// Whether there is a screen to show windows on.
#pragma once

// Instead of a crash, a program that finds no screen is to say so and end with exit status 1. Before the
// application object is made.
void end_without_display();
// Once it is there.
void display_found();
