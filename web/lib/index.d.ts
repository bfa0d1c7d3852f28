// @libnote/web: libNote's pages in WebAssembly. Pages are numbered as the note's index
// numbers them (from 1), as in notetool.

/** A note the library refuses: the message is the one notetool prints after "notetool: ". */
export class NoteError extends Error {
    readonly name: 'NoteError';
    /** The library's status code; 0 when the failure has none. */
    readonly code: number;
    /** What the library wrote to its log during the call. */
    readonly log: string;
}

export interface PageSize {
    /** Pixels of the page at scale 1. */
    width: number;
    height: number;
    /** Page pixels per inch on paper: the note's DEVICE_DPI, else 226. */
    dpi: number;
    /** The page's size on paper, in points (1/72 inch), as notetool's PDF pages have it. */
    widthPt: number;
    heightPt: number;
}

export interface RenderOptions {
    /** Above 0 up to 1 (reduced, grey), or a whole number up to 4. Default 1. */
    scale?: number;
    /** Draw only these layers (e.g. ["MAINLAYER", "BGLAYER"]), still in the page's own order. */
    layers?: string[];
    /** "white" paper (default), or "transparent": only ink is opaque. */
    background?: 'white' | 'transparent';
}

export interface PageImage {
    width: number;
    height: number;
    /** RGBA, row by row: ready for `new ImageData(data, width, height)`. */
    data: Uint8ClampedArray;
}

export interface Stroke {
    /** Pixel positions [x, y] on the image of the size asked for. */
    points: [number, number][];
    pressures: number[];
}

export interface Note {
    readonly pageCount: number;
    /** The page numbers of the note's index, ascending. */
    readonly pages: number[];
    /** What the library wrote to its log during the last call. */
    readonly log: string;
    pageSize(page: number): PageSize;
    /** The layers the page has, top first. */
    layers(page: number): string[];
    /** The page's pixels, the same as `notetool render --scale` gives. */
    render(page: number, options?: RenderOptions): PageImage;
    /** The page's strokes mapped onto an image of that size (default 1404 x 1872), as `notetool strokes`. */
    strokes(page: number, size?: { width?: number; height?: number }): Stroke[];
    /** Frees the note; its calls throw afterwards. */
    close(): void;
}

/**
 * Opens a note from its bytes; `name` is the file name its messages give (default "note.note").
 * Rejects with NoteError when the library refuses the note.
 */
export function openNote(bytes: Uint8Array | ArrayBuffer, options?: { name?: string }): Promise<Note>;
