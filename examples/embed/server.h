/* What the parts of this server tell one another beside the module's own headers. */
#ifndef SERVER_H
#define SERVER_H

#include <stdio.h>

/* The error log is kept in memory. Prints its lines. */
void print_log(FILE* stream);

/* Blocks of the allocator that are still out. */
long blocks_held(void);

/* The directory of the configuration files. */
void set_configuration_directory(const char* directory);

#endif
