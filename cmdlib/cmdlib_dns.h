/* cmdlib_dns: the library's own DNS client.
 *
 * Two independent layers:
 *  - the probe pair get_host_by_name_v4/_v6: one A or AAAA question to one
 *    server over the caller's datagram socket; 0 when an answer came back;
 *  - the resolver utility_gethostbyname: A records through a chosen
 *    primary and secondary server, out of a chosen interface and from a
 *    chosen source address, without the system resolver.  Its building
 *    blocks are exported too.
 *
 * Only IPv4 transport is used by the resolver.  A resolver query waits
 * 250 ms after every send and receive attempt (at least 500 ms a server,
 * about 6 s at most); a probe waits up to 5 s for its answer.
 *
 * Diagnostics go to "/tmp/.send_dns.log" while "/tmp/.dns_debug" exists.
 * No shared state: each call owns its socket, buffers and answer queue.
 */
#ifndef CMDLIB_DNS_H
#define CMDLIB_DNS_H

#include <netinet/in.h>
#include <stdint.h>
#include <sys/socket.h>

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* ---- Records ------------------------------------------------------------ */

/* The 12-byte message header as sent.  Bit fields run from the low bit of
 * the third header byte on a little-endian target (rd low, qr high; rcode
 * the low nibble of the fourth byte, ra its high bit).  The counts are in
 * network order. */
typedef struct dnsHeader_s {
    uint16_t id;
    unsigned int rd : 1;
    unsigned int tc : 1;
    unsigned int aa : 1;
    unsigned int opcode : 4;
    unsigned int qr : 1;
    unsigned int rcode : 4;
    unsigned int cd : 1;
    unsigned int ad : 1;
    unsigned int z : 1;
    unsigned int ra : 1;
    uint16_t q_count;
    uint16_t ans_count;
    uint16_t auth_count;
    uint16_t add_count;
} dnsHeader_t;

/* The same header in plain fields, and the question's tail, as the probe
 * layer declares them.  The class field is spelt class_ in C++, where
 * "class" is a keyword; the layout is the same. */
typedef struct dns_header {
    unsigned short id;
    unsigned short flags;
    unsigned short nques;
    unsigned short nanswer;
    unsigned short nauth;
    unsigned short naddi;
} dns_header;

typedef struct dns_query {
    unsigned short type;
#ifdef __cplusplus
    unsigned short class_;
#else
    unsigned short class;
#endif
} dns_query;

/* The four bytes after the encoded name of a question, network order. */
typedef struct dnsQueryInfo_s {
    uint16_t qtype;
    uint16_t qclass;
} dnsQueryInfo_t;

/* Fixed part of one answer record, host order.  name_pos is the 14-bit
 * offset of the owner name's compression pointer. */
typedef struct dnsAnswerInfo_s {
    uint16_t name_pos;
    uint16_t type;
    uint16_t _class;
    uint32_t ttl;
    uint16_t data_len;
} dnsAnswerInfo_t;

/* One decoded A answer: name is never filled; addr_v4 holds the record
 * data (at most 5 bytes are accepted). */
typedef struct dnsAnswerV4_s {
    unsigned char *name;
    dnsAnswerInfo_t *an_info;
    unsigned char addr_v4[5];
} dnsAnswerV4_t;

/* One slot of the answer queue (a queue is one heap block of slots).
 * is_poped: 1 free (never filled or already taken), 0 holds an address. */
#define DNS_ANS_ADDR_STR_SIZE 64
typedef struct dnsAnswerAddrQueue_s {
    char is_poped;
    unsigned char addr_str[DNS_ANS_ADDR_STR_SIZE];
} dnsAnswerAddrQueue_t;

/* Query and answer of utility_gethostbyname.  Text fields need no
 * terminator when full: each is read only up to its width. */
typedef struct {
    char url[256];    /* name or URL to resolve (scheme, port and path are dropped) */
    char dns[2][32];  /* primary and secondary server, dotted IPv4 */
    char iface[32];   /* interface to send from ("": any) */
    char wan_ip[32];  /* source IPv4 address ("": any) */
} CmdlibDnsQueryInfo, *pCmdlibDnsQueryInfo;

typedef struct {
    char ip[2][32]; /* up to two IPv4 addresses, dotted; "" when none */
} CmdlibAnswerInfo, *pCmdlibAnswerInfo;

/* ---- Probe layer ---------------------------------------------------------- */

/* Datagram socket of family AF_INET / AF_INET6; negative on failure. */
CMDLIB_API int socket_v4_init(void);
CMDLIB_API int socket_v6_init(void);
/* Closes fd only when it is greater than 0 (descriptor 0 is never closed). */
CMDLIB_API void socket_close(int fd);
/* One question for name (A / AAAA) to server sev port 53 over fd, waiting
 * up to 5 s for the answer.  A null or empty name or server means a fixed
 * public test host or public resolver.  0 when a response with a non-zero
 * answer count arrived, 1 otherwise.  fd is neither created nor closed. */
CMDLIB_API int get_host_by_name_v4(const char *name, const char *sev, int fd);
CMDLIB_API int get_host_by_name_v6(const char *name, const char *sev, int fd);

/* ---- Resolver layer (-1: a null argument unless stated) ------------------- */

/* UDP socket, non-blocking; bound to iface (SO_BINDTODEVICE) and to the
 * source address src_ip (port 0) when they are non-empty.  A failing bind
 * is only logged: the descriptor is returned either way.  -1 when no
 * socket could be made. */
CMDLIB_API int32_t create_udp_socket(const char *iface, const char *src_ip);
/* AF_INET, port 53, dns_server by inet_addr; -1 for text that does not
 * convert and also for "255.255.255.255". */
CMDLIB_API int32_t create_request_sockaddr_in(struct sockaddr_in *p_s_in, const unsigned char *dns_server);
/* id from the process id, recursion desired, one question; returns 12. */
CMDLIB_API int32_t setup_dns_header(dnsHeader_t *p_header);
/* returns 4 */
CMDLIB_API int32_t setup_dns_query_info(dnsQueryInfo_t *p_query_info, const int32_t query_type,
                                        const int32_t query_class);
/* The first domain_len bytes of domain as length-prefixed labels ending in
 * a 0 byte (strlen + 2 bytes).  Nothing is written unless domain_len is
 * below 254 and the encoded name fits in buf_size. */
CMDLIB_API void reformat_domain(unsigned char *o_buf, const int32_t buf_size, const unsigned char *domain,
                                const int32_t domain_len);
/* Header + encoded name + A/IN tail; the message length, -1 when it does
 * not fit in buf_size. */
CMDLIB_API int32_t build_quest_payload(unsigned char *o_buf, const int32_t buf_size, const unsigned char *domain,
                                       const int32_t domain_len);
/* Up to 12 sendto / recvfrom attempts, each followed by a 250 ms pause,
 * stopping at the first non-negative result; that last result. */
CMDLIB_API int32_t send_request(unsigned char *msg_buf, const int32_t payload_len, const int32_t sock,
                                struct sockaddr *dest_addr, const int32_t addr_len);
CMDLIB_API int32_t recv_answer(unsigned char *o_buf, const int32_t buf_size, const int32_t sock,
                               struct sockaddr *dest_addr, int32_t *addr_len);
/* Pushes the A records of a response into the queue (at most
 * expect_ans_cnt; the answers are taken to start at quest_payload_size).
 * msg_buf must hold 1501 bytes (the resolver's receive buffer, zeroed past
 * what arrived).  0, or -1 when a record is cut short or an A record's
 * data is longer than 5 bytes: addresses pushed before stay. */
CMDLIB_API int32_t get_ip_from_answer_v4(dnsAnswerAddrQueue_t *o_ans_queue, const int32_t expect_ans_cnt,
                                         unsigned char *msg_buf, const int32_t quest_payload_size);

/* The answer queue: expect_ans_cnt slots in one block, all free. */
CMDLIB_API int32_t utility_dns_ans_queue_init(dnsAnswerAddrQueue_t **o_queue, const int32_t expect_ans_cnt);
CMDLIB_API void utility_dns_ans_queue_delete(dnsAnswerAddrQueue_t *p_queue);
/* Takes the first filled slot's text (bounded by buf_size); "" when none. */
CMDLIB_API void utility_dns_ans_queue_pop(unsigned char *o_buf, const int32_t buf_size,
                                          dnsAnswerAddrQueue_t *p_ans_queue, const int32_t expect_ans_cnt);
/* Puts the text into the first free slot (bounded by addr_len and the slot);
 * a full queue drops it. */
CMDLIB_API void dns_ans_queue_push(const unsigned char *addr_str, const int32_t addr_len,
                                   dnsAnswerAddrQueue_t *p_ans_queue, const int32_t expect_ans_cnt);

/* 1 when addr reads as "%d.%d.%d.%d" (missing octets 0, trailing text
 * ignored) with every octet 0..255 and the last one neither 0 nor 255;
 * else 0.  addr_len is not used. */
CMDLIB_API int32_t is_available_ipv4_addr(const unsigned char *addr, const int32_t addr_len);

/* One query of domain (a name or URL, at most 256 bytes) through one server;
 * an IPv4 literal host is pushed as it stands without traffic.  0, or a
 * negative result of the step that failed. */
CMDLIB_API int32_t utility_get_host_name_v4_no_truncated(dnsAnswerAddrQueue_t *o_ans_queue,
                                                         const int32_t expect_ans_cnt, const unsigned char *domain,
                                                         const int32_t domain_len, const unsigned char *dns_server,
                                                         const int32_t dns_s_len, const char *iface,
                                                         const char *wan_ip);
/* Resolves pQuery->url through the primary and, while nothing was found,
 * the secondary server.  0 with at least pAnswer->ip[0] filled; -1 null or
 * empty query (or the last query's failure), -2 no memory for the queue,
 * -3 the server answered without an A record. */
CMDLIB_API int utility_gethostbyname(pCmdlibDnsQueryInfo pQuery, pCmdlibAnswerInfo pAnswer);

CMDLIB_END_DECLS

#endif
