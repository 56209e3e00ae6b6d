#include <KestrelKit/model/Disclaimer.h>
