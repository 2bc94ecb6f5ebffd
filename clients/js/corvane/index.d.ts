/** A way to a server: `overBridge`, or `overTcp` of "corvane-client/tcp". */
export interface Transport {
  /** Begins a new connection; calls none of the events before it returns. */
  open(events: TransportEvents): Channel;
}

export interface TransportEvents {
  opened(): void;
  received(bytes: Uint8Array): void;

  /** The other side or an error ended the connection, or it could not be made. */
  lost(): void;
}

export interface Channel {
  send(bytes: Uint8Array): void;

  /** Ends the connection; what its events tell from now on is ignored. */
  close(): void;
}

/**
 * The way to a server through a WebSocket bridge at `address`: one of "ws:" or "wss:", or in a page
 * one that is relative to the page's. Throws a TypeError for any other.
 */
export function overBridge(address: string | URL): Transport;

/** One entry of a directory, or of the network. */
export class Entry {
  constructor(kind: string, name: string, attributes: string);

  /** "file", "directory", "share", "server" or "domain". */
  readonly kind: string;

  /** Directories end with "/". */
  readonly name: string;

  /** Letters out of "d" directory, "s" system, "h" hidden, "r" read-only. */
  readonly attributes: string;

  isDirectory(): boolean;
  isHidden(): boolean;
  isReadOnly(): boolean;
}

/** A rectangle in screen pixels. */
export interface Rect {
  x: number;
  y: number;
  width: number;
  height: number;
}

export type FailureKind = "refused" | "unsendable" | "disconnected" | "timedOut" | "malformed";

/** Why a command has no result; what the promise of a command is rejected with. */
export class Failure extends Error {
  /** The server answered FAILED. Its reason is in the server's log only. */
  static readonly REFUSED: "refused";

  /** A parameter is something that a request cannot carry; nothing was sent. */
  static readonly UNSENDABLE: "unsendable";

  /** No connection, or it ended before the reply: the command may have been carried out. */
  static readonly DISCONNECTED: "disconnected";

  /** No reply in time: the command may still be carried out. */
  static readonly TIMED_OUT: "timedOut";

  /** The reply was not one that the server writes, or belonged to another command. */
  static readonly MALFORMED: "malformed";

  constructor(kind: FailureKind, action: string, errno?: number, hint?: string);

  readonly kind: FailureKind;

  /** The command's name. */
  readonly action: string;

  /** The system's error number; 0 when the reply has none (only `write` gives one). */
  readonly errno: number;

  /** What the reply says about the object of the command; empty when it says nothing. */
  readonly hint: string;
}

/**
 * The Corvane server's commands as methods: one per command, with the command's name.
 *
 * Each gives a promise of what the command came to, and rejects it with a `Failure`. The commands are
 * carried out one at a time in the order of the calls. The connection is made by the first call, and
 * made again by the next call after it was lost.
 *
 * Paths may use "/" or "\". They are the server's: relative ones start at its current directory.
 */
export class CorvaneClient {
  /** Flags of `setWndPos`. */
  static readonly POSITION: 1;
  static readonly SIZE: 2;

  constructor(transport: Transport);

  /** Milliseconds to wait for the connection and for each reply; 10,000 unless set. */
  setTimeout(milliseconds: number): void;

  /** Ends the connection; commands without a reply fail as disconnected. */
  close(): void;

  /** Creates or replaces a file. The text is stored as UTF-8; it cannot hold the codes 0 and 1. */
  write(path: string, text: string): Promise<true>;

  /** Creates one directory; gives its path. It is no failure when the directory is there already. */
  makeDir(path: string): Promise<string>;

  /** A value of the registry; `root` is one of the five long names such as "HKEY_CURRENT_USER". */
  regQueryValue(root: string, path: string, name: string): Promise<string>;

  /** Removes a file, or a directory with all that is in it. A path that is not there is no failure. */
  delete(path: string): Promise<true>;

  /** Starts a program or opens a document or an address; success says that it was handed over. */
  execute(target: string): Promise<true>;

  /**
   * Copies a file, or what is in a directory into an existing directory. The extensions (without dot;
   * null for no limit) choose files of a directory, not a single file.
   */
  copy(source: string, destination: string, recursive?: boolean, included?: readonly string[] | null,
    excluded?: readonly string[] | null): Promise<true>;

  /** Moves a file. A directory is moved only when it is empty, else it is copied and this fails. */
  rename(source: string, destination: string): Promise<true>;

  /** Writes a line into the server's log. Empty category: "ext.log"; empty priority: INFO. */
  log(category: string, priority: string, message: string): Promise<true>;

  /** The byte at an offset, 0 to 255. */
  readByte(path: string, offset: number): Promise<number>;

  /** A whole file as text. Bytes 0 in it are left out; what is not UTF-8 becomes U+FFFD. */
  readText(path: string): Promise<string>;

  /** The entries of a directory, directories first, each group by name. */
  listDir(path: string): Promise<Entry[]>;

  /** The home directory; with "desktop" the desktop, which is empty when there is none. */
  userDir(which?: string): Promise<string>;

  /** The server's current directory. */
  currentDir(): Promise<string>;

  /** The directory for temporary files. */
  tempDir(): Promise<string>;

  /** The server refuses this always: its registry is read-only. */
  regSetValue(root: string, path: string, name: string, value: string): Promise<true>;

  /** Where a window is. Empty title: the Flash player's. */
  getWndRect(window?: string): Promise<Rect>;

  /** The screen; x and y are 0. */
  getScreenRect(): Promise<Rect>;

  /**
   * Moves a window (flag POSITION), sizes it (flag SIZE), or both (their sum). Numbers without their
   * flag are not sent. Empty title: the Flash player's.
   */
  setWndPos(flags: number, x: number, y: number, width: number, height: number, window?: string): Promise<true>;

  /** Brings a window to the front; refused always, on macOS and on Linux. */
  bringToFront(window: string): Promise<true>;

  /** Domains, servers of a domain or shares of a server; refused always, on macOS and on Linux. */
  listNet(group?: string): Promise<Entry[]>;

  /** The login name; empty when the server belongs to no log-in session. */
  userName(): Promise<string>;

  /** The clipboard's text; refused always, on macOS and on Linux. */
  clipboardGet(): Promise<string>;

  /** Ends the server; success is the end of the connection. Its configuration may refuse it. */
  shutdown(): Promise<true>;
}
