// The hour of a card: at home, in town, in the tunnel without service, and home again; what the
// modem answers in each place, and what the router publishes there.
#pragma once

#include "published.h"

struct Place {
    std::vector<Reply> replies;  // that differ from the place before
    Changes changes;             // of the statistics file, against the one at home
    Lines small_files;           // "name: line"; a lone "name" for a file that must not be there
};

struct HourCard {
    std::string name;
    std::string options;
    std::string home_file;  // the statistics file without its first line
    Changes at_start_up;    // what it lacks when it is first written
    Place home;
    Place town;
    Place tunnel;
    Place back;  // `home` again; its changes are what stays behind
};

HourCard HourOf881();
HourCard HourOfUsb305();
HourCard HourOfE362();
HourCard HourOfE371();
HourCard HourOfMc75i();
HourCard HourOfGeneric();

// Pieces that the cards share.
std::vector<Reply> Together(std::vector<std::vector<Reply>> parts);
std::vector<Reply> AtHome();
