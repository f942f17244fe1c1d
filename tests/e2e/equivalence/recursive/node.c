/* Structures that reach themselves through pointers, directly, through a
 * typedef and through another structure, and a recursive structure held
 * by value. */
typedef struct node node_t;

struct node {
    int value;
    struct node *next;
    node_t *alias;
    struct peer *peer;
};

struct peer {
    int x;
    struct node *back;
};

typedef struct list {
    node_t *head;
    int size;
    struct list *self;
    node_t first;
} list_t;

void step(list_t *l)
{
    l->size = l->head->value + l->first.peer->x;
    l->head = l->head->next;
}
