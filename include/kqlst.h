/* The server's generic doubly linked list. */
#ifndef KQLST_H
#define KQLST_H

#include "kqtype.h"

typedef struct kq_lst_node_struct kq_lst_node_t;

struct kq_lst_node_struct {
    void* data;
    void* flag;
    kq_lst_node_t* prev;
    kq_lst_node_t* next;
};

typedef struct kq_lst_struct {
    ulint count;
    kq_lst_node_t* start;
    kq_lst_node_t* end;
} kq_lst_t;

#endif
