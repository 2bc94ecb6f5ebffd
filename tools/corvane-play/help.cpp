#include "corvane-play/options.h"

namespace corvane::play {

const std::string_view helpText =
    R"(Usage: corvane-play [options] MOVIE.swf | DIRECTORY | PAGE.html
       corvane-play --bridge --allow-origin ORIGIN [options]

Plays a Flash application in a browser, with Corvane under it. The application
connects to Corvane as it always has; Corvane is started if it does not run.
The program ends when the page has been closed.

What to play:
  MOVIE.swf               this movie; what lies beside it can be loaded by it
  DIRECTORY               its index.html, or the only movie in it
  PAGE.html               a page of your own with a movie in it
  --flashvars A=B&C=D     variables that the movie starts with
  --scale                 let the movie fill the window; its own size if not

Where to show it:
  --kiosk                 full screen, in Chromium, Chrome, Edge or Firefox
  --no-open               open no browser, print the page's address
  --stay                  go on when the page has been closed

What the application may reach:
  --allow HOST:PORT       a server besides Corvane; may be given several times
  --port PORT             Corvane's port, if it is not the configured one
  --config FILE           Corvane's configuration, or the directory with it

For a page that another web server serves:
  --bridge                only connect the page with Corvane, serve no files;
                          prints the address for the page's WebSocket
  --allow-origin ORIGIN   whose pages may, as in https://www.example.com; may
                          be given several times

  -h, --help              print this help
  -v, --version           print the version

Example: corvane-play --kiosk /usr/share/game/start.swf
)";

}  // namespace corvane::play
