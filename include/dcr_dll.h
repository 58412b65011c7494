/* The cluster registry, read from kqdcr.ini: the endpoints of this instance's group. */
#ifndef DCR_DLL_H
#define DCR_DLL_H

#include "kqtype.h"

KQ_BEGIN_C

enum { DCR_EP_MAX = 16 };

typedef struct dcr_ep_struct {
    sysname_t ep_name; /* the endpoint's instance name */
    byte dcr_seqno;    /* its number in the cluster registry, 0 to 255 */
    byte ep_seqno;     /* its number in the group, 0 to 15 */
    schar ep_host[65];
    usint ep_lsnr_port;
} dcr_ep_t;

/* The group of type `group_type` that has an endpoint `ep_name` (ignoring case): the endpoint's
 * number in the group and the group's number. `which` is 0. Negative when there is none. */
kqcode_t dcr3_dll_get_group_seq_by_type(ulint group_type, const schar* ep_name, ulint which,
                                        usint* self_epno, usint* dgroup_seq);

/* The cluster-registry numbers of the group's healthy (ok) or failed (err) endpoints, each array
 * with room for DCR_EP_MAX, and the map that dcr3_dll_get_ep_seqno_by_dcr_seqno reads: element i
 * is the cluster-registry number of the endpoint whose number in the group is i. */
kqcode_t dcr3_dll_group_get_ok_ep_arr(usint dgroup_seq, byte* n_ok_ep, byte* ok_ep_arr,
                                      byte* ep_seqno_arr);
kqcode_t dcr3_dll_group_get_err_ep_arr(usint dgroup_seq, byte* n_err_ep, byte* err_ep_arr,
                                       byte* ep_seqno_arr);

/* An endpoint's number in the group, in the low byte; 255 for an unknown one. */
usint dcr3_dll_get_ep_seqno_by_dcr_seqno(byte dcr_seqno, const byte* ep_seqno_arr);

/* The description of an endpoint; negative when there is none. */
kqcode_t dcr3_dll_get_ep_info_by_type(ulint group_type, byte dcr_seqno, dcr_ep_t* ep);

KQ_END_C

#endif
