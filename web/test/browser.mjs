// Headless Chromium (Debian's, never a downloaded one) on the built viewer, served from a
// folder as any static host would serve it.

import { createServer } from 'node:http';
import { existsSync, mkdtempSync, readFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { extname, join, normalize } from 'node:path';

export const chromiumPath = process.env.CHROMIUM ?? '/usr/bin/chromium';

const types = { '.html': 'text/html', '.js': 'text/javascript', '.mjs': 'text/javascript', '.css': 'text/css', '.wasm': 'application/wasm' };

// Serves `root`, and `extra` (URL path -> file) beside it; resolves to the server's origin.
export function serve(root, extra = {}) {
    const server = createServer((request, response) => {
        const path = decodeURIComponent(new URL(request.url, 'http://x').pathname);
        const file = extra[path] ?? join(root, normalize(path).replace(/^(\.\.[/\\])+/, ''), path.endsWith('/') ? 'index.html' : '');
        if (!existsSync(file)) {
            response.writeHead(404).end();
            return;
        }
        response.writeHead(200, { 'content-type': types[extname(file)] ?? 'application/octet-stream' });
        response.end(readFileSync(file));
    });
    return new Promise((resolve) =>
        server.listen(0, '127.0.0.1', () => resolve({ server, origin: `http://127.0.0.1:${server.address().port}` })));
}

export async function launch() {
    const { default: puppeteer } = await import('puppeteer-core');
    return puppeteer.launch({
        executablePath: chromiumPath,
        headless: true,
        args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
            '--disable-background-networking', '--disable-component-update', '--disable-sync',
            `--user-data-dir=${mkdtempSync(join(tmpdir(), 'libnote-chromium-'))}`],
    });
}

// The canvas's pixels, as the page shows them.
export async function canvasImage(page, selector) {
    const { width, height, base64 } = await page.$eval(selector, (canvas) => {
        const data = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
        let text = '';
        for (let i = 0; i < data.length; i += 0x8000) text += String.fromCharCode(...data.subarray(i, i + 0x8000));
        return { width: canvas.width, height: canvas.height, base64: btoa(text) };
    });
    return { width, height, data: new Uint8ClampedArray(Buffer.from(base64, 'base64')) };
}
