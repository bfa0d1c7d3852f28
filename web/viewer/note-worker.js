// Decodes pages off the main thread, so that scrolling and zooming stay smooth. One note at a
// time: opening another closes the one before.

import { openNote } from './lib/index.js';

let note = null;

const handlers = {
    async open({ bytes, name }) {
        note?.close();
        note = null;
        note = await openNote(bytes, { name });
        return { pages: note.pages, size: note.pageSize(note.pages[0]) };
    },
    layers({ page }) {
        return note.layers(page);
    },
    render({ page, scale, layers }) {
        const image = note.render(page, { scale, layers });
        return { result: image, transfer: [image.data.buffer] };
    },
};

self.onmessage = async ({ data: { id, type, ...args } }) => {
    try {
        const answer = await handlers[type](args);
        const { result, transfer = [] } = answer && 'transfer' in answer ? answer : { result: answer };
        self.postMessage({ id, result }, transfer);
    } catch (error) {
        self.postMessage({ id, error: { name: error.name, message: error.message, code: error.code, log: error.log } });
    }
};
