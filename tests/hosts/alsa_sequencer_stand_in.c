/* An ALSA sequencer in which nothing ever arrives, for machines that have none: containers, machines in the
 * cloud. Hosts that do not start without one start with this library preloaded. What they send is dropped;
 * their own plug-ins do not notice, since a host hands them their events itself.
 *
 *   cc -shared -fPIC -o stand_in.so alsa_sequencer_stand_in.c
 *   LD_PRELOAD=./stand_in.so qtractor
 *
 * Only the calls that take a sequencer's handle are here; records are still libasound's own.
 */
#include <alsa/asoundlib.h>
#include <poll.h>
#include <unistd.h>

/* The handle is never looked into; behind it lies a pipe in which nothing arrives, for hosts that poll. */
static int pipe_ends[2] = {-1, -1};
static int ports;

int snd_seq_open(snd_seq_t** sequencer, const char* name, int streams, int mode) {
    (void)name, (void)streams, (void)mode;
    if (pipe_ends[0] < 0 && pipe(pipe_ends) != 0) return -errno;
    *sequencer = (snd_seq_t*)pipe_ends;
    return 0;
}

int snd_seq_poll_descriptors_count(snd_seq_t* sequencer, short events) {
    (void)sequencer;
    return (events & POLLIN) != 0;
}

int snd_seq_poll_descriptors(snd_seq_t* sequencer, struct pollfd* places, unsigned int count, short events) {
    (void)sequencer;
    if (count == 0 || !(events & POLLIN)) return 0;
    places[0] = (struct pollfd){.fd = pipe_ends[0], .events = POLLIN};
    return 1;
}

int snd_seq_event_input(snd_seq_t* sequencer, snd_seq_event_t** event) {
    (void)sequencer;
    *event = NULL;
    return -EAGAIN;
}

/* Clients 0 to 127 are the system's, so that this is a program's first number. */
int snd_seq_client_id(snd_seq_t* sequencer) {
    (void)sequencer;
    return 128;
}

int snd_seq_create_simple_port(snd_seq_t* sequencer, const char* name, unsigned int caps, unsigned int type) {
    (void)sequencer, (void)name, (void)caps, (void)type;
    return __atomic_fetch_add(&ports, 1, __ATOMIC_RELAXED);
}

#define ANSWERS(answer, call, ...)                                                                           \
    int call(__VA_ARGS__) { return answer; }
#define S snd_seq_t* sequencer

#pragma GCC diagnostic ignored "-Wunused-parameter"

/* Nothing is there to be listed. */
ANSWERS(-ENOENT, snd_seq_query_next_client, S, snd_seq_client_info_t* info)
ANSWERS(-ENOENT, snd_seq_query_next_port, S, snd_seq_port_info_t* info)
ANSWERS(-ENOENT, snd_seq_query_port_subscribers, S, snd_seq_query_subscribe_t* query)
ANSWERS(-ENOENT, snd_seq_get_any_client_info, S, int client, snd_seq_client_info_t* info)
ANSWERS(-ENOENT, snd_seq_get_any_port_info, S, int client, int port, snd_seq_port_info_t* info)
ANSWERS(-ENOENT, snd_seq_get_port_subscription, S, snd_seq_port_subscribe_t* subscription)
ANSWERS(0, snd_seq_event_input_pending, S, int fetch)

/* Taken, and without effect. */
ANSWERS(0, snd_seq_close, S)
ANSWERS(0, snd_seq_set_client_name, S, const char* name)
ANSWERS(0, snd_seq_alloc_queue, S)
ANSWERS(0, snd_seq_free_queue, S, int queue)
ANSWERS(0, snd_seq_control_queue, S, int queue, int type, int value, snd_seq_event_t* event)
ANSWERS(0, snd_seq_get_queue_status, S, int queue, snd_seq_queue_status_t* status)
ANSWERS(0, snd_seq_get_queue_tempo, S, int queue, snd_seq_queue_tempo_t* tempo)
ANSWERS(0, snd_seq_set_queue_tempo, S, int queue, snd_seq_queue_tempo_t* tempo)
ANSWERS(0, snd_seq_set_queue_timer, S, int queue, snd_seq_queue_timer_t* timer)
ANSWERS(0, snd_seq_delete_simple_port, S, int port)
ANSWERS(0, snd_seq_get_port_info, S, int port, snd_seq_port_info_t* info)
ANSWERS(0, snd_seq_set_port_info, S, int port, snd_seq_port_info_t* info)
ANSWERS(0, snd_seq_subscribe_port, S, snd_seq_port_subscribe_t* subscription)
ANSWERS(0, snd_seq_unsubscribe_port, S, snd_seq_port_subscribe_t* subscription)
ANSWERS(0, snd_seq_event_output, S, snd_seq_event_t* event)
ANSWERS(0, snd_seq_event_output_direct, S, snd_seq_event_t* event)
ANSWERS(0, snd_seq_drain_output, S)
ANSWERS(0, snd_seq_drop_output, S)
ANSWERS(0, snd_seq_drop_input, S)
ANSWERS(0, snd_seq_remove_events, S, snd_seq_remove_events_t* which)
