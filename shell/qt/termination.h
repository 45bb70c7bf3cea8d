// The system's wish that the program ends, as at the end of a user's session: SIGTERM, SIGINT or SIGHUP.
#pragma once

// From now on each of them closes all windows as the user would, settings and all; coming again
// it ends the program at once. One that is ignored, as under nohup, stays so. After the QApplication was
// made, interface thread only.
void heed_termination();
