#include "TestHttpServer.h" // the server is all in its header
