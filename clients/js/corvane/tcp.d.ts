import type {Transport} from "./index.js";

/**
 * The way to a server over TCP, in Node.js; 127.0.0.1 and port 54321 unless given. Throws a TypeError
 * for a host that is no text, a RangeError for what is no port.
 */
export function overTcp(host?: string, port?: number): Transport;
