/* Finding cards: on all networks, by their serial numbers, and connecting to what was found. Conventions: kelvo.h.
 *
 * None of these functions talks over a connection that there is already; whatever connections they need are their own.
 * All of them may be called at any time, several at once, and inside a callback, which then keeps its connection from
 * receiving as long as they take.
 */
#ifndef KELVO_DISCOVERY_API_H
#define KELVO_DISCOVERY_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* A card. Functions that fill one in never write the last character of a text: zero the array first, as in
 * `vlCardInfo cards[100] = {0}`, and every text ends with a zero. What does not fit is cut. */
typedef struct vlCardInfo {
  char SerialNumber[40]; /* "12345"; empty when the card told none */
  int32_t Port;          /* the TCP port at which it takes connections */
  char IPAddress[60]; /* "192.168.1.7", "fe80::222:4aff:fe01:1%2": the number behind % is the interface's */
} vlCardInfo;
KELVO_STATIC_ASSERT(sizeof(vlCardInfo) == 104, "the layout is part of the interface");

/* Finds the cards on all networks of this host: searches on every interface that is up, takes multicasts and is no
 * loopback, over IPv4 and IPv6, to the ports 1900 and 1909. Takes nine seconds, whatever there is. Fills `cards`, an
 * array of `capacity` records, in the order of serial numbers (as texts) and writes how many to `*count`. A card that
 * answers from two addresses is listed twice, IPv4 first; what answers without a serial number has an empty one; the
 * port is always KELVO_DEFAULT_PORT. `cards` may be null when `capacity` is 0. Needs no privileges; a firewall must let
 * UDP answers in. Returns 0, also when there is no card, or -1 and writes nothing:
 *   - "Buffer is too small": there are more cards than `capacity`
 *   - "Invalid IP address.": somebody answered with a malformed address
 *   - "Unable to get interface addresses."
 *   - "Socket is not open. Error code: NUMBER" (an errno): an interface could not be used, or went away; at once,
 *     but for an address that the system does not let be used yet, as just after a cable was plugged in: it has two
 *     seconds */
KELVO_API int32_t vlDiscover(vlCardInfo* cards, uint32_t capacity, uint32_t* count);

/* Finds cards that do not answer a search, by their serial numbers: pings the link-local addresses that those from
 * `first_serial` to `last_serial` predict, for every kind of installation, and asks whatever answers for its serial
 * number, which is the one that is listed. Two sweeps, 1000 ms for each of the four pings a number, 50 of them at once:
 * up to 160 ms a number, and what a connection takes. Nothing is found for an empty range. Fills `cards` as vlDiscover
 * does; a card is listed once. Needs the privilege of raw sockets (root, or CAP_NET_RAW), and ways to 169.254.0.0/16
 * and to fe80::/64. Uses up a connection handle for each answer. Returns 0, or -1 and writes nothing:
 *   - "CardInfo buffer too small.": there are more cards than `capacity`
 *   - "Invalid negative serial number."
 *   - "\"socket\" failed in the \"Ping\" function.": no privilege, or too many descriptors
 *   - "\"sendto\" failed in the \"Ping\" function.": no way to one of the addresses
 *   - "\"setsockopt\" failed in the \"Ping\" function.": a negative time-out */
KELVO_API int32_t vlDiscoverByPinging(int32_t first_serial, int32_t last_serial, vlCardInfo* cards,
                                      uint32_t capacity, uint32_t* count);

/* The same with `sweeps` (for 0 or less nothing is found), `timeout_ms` of each ping, and at most `max_parallel` pings
 * at once (less than 1 counts as 1); each of them has a thread while it lasts. */
KELVO_API int32_t vlDiscoverByPingingCustomized(int32_t first_serial, int32_t last_serial, vlCardInfo* cards,
                                                uint32_t capacity, uint32_t* count, int32_t sweeps,
                                                int32_t timeout_ms, int32_t max_parallel);

/* How a card is installed. */
typedef enum vlInstallation {
  vlInstallation_Internal = 0,     /* inside a machine */
  vlInstallation_ExternalDhcp = 1, /* outside, with an IPv4 address from DHCP */
  vlInstallation_External = 2,     /* outside, with a link-local IPv4 address */
} vlInstallation;

/* Writes the link-local address of the card `serial_number` ("12345", "KV712345") as text into `buffer` of `size` bytes,
 * and zeroes the rest. `installation` is one of vlInstallation; any other number means what vlInstallation_External does.
 * `ipv6`: the IPv6 address, without an interface, instead of the IPv4 one. A buffer exactly as long as
 * the text gets no terminating zero; 40 bytes are always enough. Returns 0, or -1:
 *   - "Invalid serial number. The correct format is: [KV7]#####"
 *   - "Cannot predict IPv4 address for External/DHCP installed card.": vlInstallation_ExternalDhcp
 *   - "IPAddress buffer too small."
 * Local. */
KELVO_API int32_t vlPredictIPAddressFromSerialNumber(const char* serial_number, int32_t installation,
                                                     bool ipv6, char* buffer, uint32_t size);

/* Connects to the card of a record, also when it has another address by now: when at the record's address and port there
 * is nobody, or another card than that of the serial number, searches for it as vlDiscover does and connects to where it
 * is, by IPv4 if it can be. With the address "0.0.0.0" or "::" it searches at once: this is how to connect by serial
 * number alone.
 *     vlCardInfo card = {.SerialNumber = "12345", .IPAddress = "0.0.0.0"};
 *     const int32_t handle = vlConnectByCardInfo(&card);
 * Takes what vlConnect takes, and nine seconds more for the search. Returns the new handle (1 or more), or -1:
 *   - "Invalid IP address.": the record's address is no address text; names are not resolved
 *   - "Could not re-discover card SERIAL"
 *   - a text between lines of dashes: the card at the record's address refused; its own words stand inside
 *   - what vlDiscover can fail with but for the buffer
 *   - what vlConnect can fail with where the card was found */
KELVO_API int32_t vlConnectByCardInfo(const vlCardInfo* card);

KELVO_EXTERN_C_END

#endif
