// The parts of Boost that need compiling only once; all other files get their declarations alone.
#include <boost/asio/impl/src.hpp>
#include <boost/beast/src.hpp>
