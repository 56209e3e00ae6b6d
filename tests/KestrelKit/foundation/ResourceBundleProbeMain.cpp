#include "ResourceBundleProbe.h"

int main(int count, char** arguments) { printResourceBundle(count > 1 ? arguments[1] : nullptr); }
