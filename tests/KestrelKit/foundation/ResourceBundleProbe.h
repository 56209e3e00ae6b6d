#pragma once

/// Prints the folder of the resource bundle, then that of a second look after `removed`, when it is not null,
/// was removed; then the path of the resource `sample.json`, or `none`.
void printResourceBundle(const char* removed);
