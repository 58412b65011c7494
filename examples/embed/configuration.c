/* What the module asks about the rest of the configuration. This server keeps it in tables; another
 * would read files or ask its own registries. */
#include <string.h>
#include <strings.h>

#include "arch_cfg.h"
#include "asm3.h"
#include "conf.h"
#include "dcr_dll.h"
#include "ini.h"
#include "mal_cfg.h"
#include "ntimer_cfg.h"
#include "server.h"
#include "utl.h"

/* ---- ini.h: the main configuration ----------------------------------------------------------- */

global_ini_info_t global_ini_info = {"", "PRIMARY", 1};

void set_configuration_directory(const char* directory) {
    snprintf(global_ini_info.config_path, sizeof global_ini_info.config_path, "%s", directory);
}

ulint ini_get_value(ulint scope, ulint index) {
    (void)scope;
    switch (index) {
        case ini_index_port_num:
            return 5236;
        case ini_index_arch_flag:
            return 1;
        default:
            return 0; /* no MPP, one node, no DFS storage */
    }
}

schar* ini_get_str_value(ulint index) {
    static schar postfix[] = "log";
    if (index == ini_index_instance_name) return global_ini_info.instance_name;
    return index == ini_index_logfile_postfix_name ? postfix : NULL;
}

schar* ini_get_instance_name(void) {
    return global_ini_info.instance_name;
}

usint ini_get_instance_port(void) {
    return (usint)ini_get_value(0, ini_index_port_num);
}

kqbool is_dpc_bp_or_mp_or_bs(void) {
    return 0;
}

/* ---- mal_cfg.h: who this instance talks to; it never changes, so that its lock does nothing -- */

static mal_cfg_t peers[] = {{"PRIMARY", "192.0.2.1", 5236},
                            {"STANDBY1", "192.0.2.2", 5236},
                            {"STANDBY2", "192.0.2.3", 5236}};
static mal_cfg_sys_t peer_registry = {sizeof peers / sizeof *peers, peers};

mal_cfg_t* mal_cfg_get_by_inst_name(const schar* inst_name) {
    for (usint i = 0; inst_name != NULL && i < peer_registry.n_mal; ++i)
        if (strcasecmp(peers[i].inst_name, inst_name) == 0) return &peers[i];
    return NULL;
}

schar* mal_cfg_get_inst_name_by_site(usint mal_seqno) {
    return mal_seqno < peer_registry.n_mal ? peers[mal_seqno].inst_name : NULL;
}

void mal_cfg_sys_enter(void) {}
void mal_cfg_sys_exit(void) {}

mal_cfg_sys_t* mal_cfg_sys_get(void) {
    return &peer_registry;
}

/* ---- ntimer_cfg.h: timers -------------------------------------------------------------------- */

ntimer_cfg_t* ntimer_cfg_find_by_name(const schar* name) {
    static ntimer_cfg_t timers[] = {{"NIGHTLY"}, {"HOURLY"}};
    for (size_t i = 0; name != NULL && i < sizeof timers / sizeof *timers; ++i)
        if (strcasecmp(timers[i].name, name) == 0) return &timers[i];
    return NULL;
}

/* ---- conf.h: client services ----------------------------------------------------------------- */

kqcode_t conf_get_global_conf_value(ulint scope, kq_global_svc_conf_t* conf) {
    static schar addresses[] = "192.0.2.9:5236";
    static kq_svc_node_t reporting = {"REPORTING", addresses};
    static kq_lst_node_t node = {&reporting, NULL, NULL, NULL};
    (void)scope;
    conf->svc_nodes = (kq_lst_t){1, &node, &node};
    return 0;
}

/* ---- dcr_dll.h, asm3.h: this server is in no cluster and has no ASM storage ------------------ */

enum { NO_CLUSTER = -1 };

kqcode_t dcr3_dll_get_group_seq_by_type(ulint group_type, const schar* ep_name, ulint which,
                                        usint* self_epno, usint* dgroup_seq) {
    (void)group_type, (void)ep_name, (void)which, (void)self_epno, (void)dgroup_seq;
    return NO_CLUSTER;
}

kqcode_t dcr3_dll_group_get_ok_ep_arr(usint dgroup_seq, byte* n_ok_ep, byte* ok_ep_arr,
                                      byte* ep_seqno_arr) {
    (void)dgroup_seq, (void)n_ok_ep, (void)ok_ep_arr, (void)ep_seqno_arr;
    return NO_CLUSTER;
}

kqcode_t dcr3_dll_group_get_err_ep_arr(usint dgroup_seq, byte* n_err_ep, byte* err_ep_arr,
                                       byte* ep_seqno_arr) {
    (void)dgroup_seq, (void)n_err_ep, (void)err_ep_arr, (void)ep_seqno_arr;
    return NO_CLUSTER;
}

usint dcr3_dll_get_ep_seqno_by_dcr_seqno(byte dcr_seqno, const byte* ep_seqno_arr) {
    (void)dcr_seqno, (void)ep_seqno_arr;
    return 255;
}

kqcode_t dcr3_dll_get_ep_info_by_type(ulint group_type, byte dcr_seqno, dcr_ep_t* ep) {
    (void)group_type, (void)dcr_seqno, (void)ep;
    return NO_CLUSTER;
}

kqbool asm3_striping_size_is_valid(ulint striping) {
    return striping == 0 || striping == 32 || striping == 64 || striping == 128 || striping == 256;
}
