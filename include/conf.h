/* The client service configuration, read from kqsvc.ini. */
#ifndef CONF_H
#define CONF_H

#include "kqlst.h"
#include "kqtype.h"

KQ_BEGIN_C

typedef struct kq_svc_node_struct {
    sysname_t name;
    schar* ips_str; /* "host:port, host:port", of any length */
} kq_svc_node_t;

typedef struct kq_global_svc_conf_struct {
    kq_lst_t svc_nodes; /* the `data` of each node is a kq_svc_node_t; file order */
} kq_global_svc_conf_t;

/* Fills `conf` with the services. `scope` is 1. The list is borrowed and stays as it is until the
 * configuration is loaded again. 0 or a negative code (the list is then empty). */
kqcode_t conf_get_global_conf_value(ulint scope, kq_global_svc_conf_t* conf);

KQ_END_C

#endif
