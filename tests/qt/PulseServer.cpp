#include "PulseServer.h" // the server is all in its header
