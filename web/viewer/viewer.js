// The viewer: a note opened from a file, a drop or ?file=URL, decoded in a worker and drawn on
// canvases. Nothing is uploaded: the bytes go from the file to the worker and no further.

const $ = (id) => document.getElementById(id);
const THUMB_SCALE = 0.1;

const worker = new Worker(new URL('note-worker.js', import.meta.url), { type: 'module' });
let nextRequest = 0;
const pending = new Map();
worker.onmessage = ({ data: { id, result, error } }) => {
    const { resolve, reject } = pending.get(id);
    pending.delete(id);
    if (error) reject(Object.assign(new Error(error.message), error));
    else resolve(result);
};
function ask(type, args, transfer = []) {
    const id = ++nextRequest;
    return new Promise((resolve, reject) => {
        pending.set(id, { resolve, reject });
        worker.postMessage({ id, type, ...args }, transfer);
    });
}

const state = { name: '', pages: [], layers: {}, size: null, index: 0, hidden: new Set(), generation: 0 };
const canvas = $('page');

function showError(message) {
    $('error').textContent = message;
    $('error').hidden = false;
}

function page() {
    return state.pages[state.index];
}

function shownLayers(number) {
    const layers = state.layers[number] ?? [];
    return layers.filter((layer) => !state.hidden.has(layer));
}

// The page's pixels with the shown layers; blank paper when every layer is hidden.
async function pageImage(number, scale) {
    const layers = shownLayers(number);
    if (layers.length === 0) {
        const width = Math.max(1, Math.round(1404 * scale)), height = Math.max(1, Math.round(1872 * scale));
        return { width, height, data: new Uint8ClampedArray(width * height * 4).fill(255) };
    }
    const all = layers.length === (state.layers[number] ?? []).length;
    return ask('render', { page: number, scale, layers: all ? undefined : layers });
}

function paint(target, image) {
    target.width = image.width;
    target.height = image.height;
    target.getContext('2d').putImageData(new ImageData(image.data, image.width, image.height), 0, 0);
}

// The page's width on screen, in CSS pixels, for the chosen zoom.
function displayWidth() {
    const zoom = $('zoom').value;
    const view = $('view');
    const room = view.clientWidth - 24;
    if (zoom === 'width') return room;
    if (zoom === 'page') return Math.min(room, ((view.clientHeight - 24) * 1404) / 1872);
    return 1404 * Number(zoom);
}

// Drawn at the screen's resolution up to the page's own; larger zooms enlarge that.
async function drawPage() {
    if (!state.pages.length) return;
    const generation = state.generation;
    const width = displayWidth();
    const scale = Math.min(1, (width * devicePixelRatio) / 1404);
    const image = await pageImage(page(), scale);
    if (generation !== state.generation) return;
    paint(canvas, image);
    canvas.style.width = `${width}px`;
    canvas.hidden = false;
    canvas.dataset.page = page();
    canvas.dataset.draws = Number(canvas.dataset.draws ?? 0) + 1;
}

function updateControls() {
    const count = state.pages.length;
    $('page-label').textContent = count ? `Page ${state.index + 1} of ${count}` : 'No note';
    $('prev').disabled = state.index <= 0;
    $('next').disabled = state.index >= count - 1;
    for (const button of ['save', 'print']) $(button).disabled = count === 0;
    for (const thumb of $('thumbs').children)
        if (Number(thumb.dataset.index) === state.index) thumb.setAttribute('aria-current', 'page');
        else thumb.removeAttribute('aria-current');
    const fieldset = $('layers');
    fieldset.replaceChildren(Object.assign(document.createElement('legend'), { textContent: 'Shown layers' }));
    for (const layer of state.layers[page()] ?? []) {
        const label = document.createElement('label');
        const box = Object.assign(document.createElement('input'), { type: 'checkbox', checked: !state.hidden.has(layer) });
        box.dataset.layer = layer;
        box.onchange = () => {
            if (box.checked) state.hidden.delete(layer);
            else state.hidden.add(layer);
            drawPage().catch((error) => showError(error.message));
        };
        label.append(box, ` ${layer}`);
        fieldset.append(label);
    }
}

// A page's layers are read when the page is first shown: a long note opens as fast as a short one.
async function readLayers(number) {
    state.layers[number] ??= await ask('layers', { page: number });
}

async function goTo(index) {
    if (!state.pages.length) return;
    state.index = Math.max(0, Math.min(state.pages.length - 1, index));
    updateControls();
    $('thumbs').children[state.index]?.scrollIntoView({ block: 'nearest' });
    try {
        await readLayers(page());
        updateControls(); // the layer toggles
        await drawPage();
    } catch (error) {
        showError(error.message);
    }
}

// Thumbnails are drawn as they scroll into sight, after the page on screen.
const thumbObserver = new IntersectionObserver((entries) => {
    for (const entry of entries) {
        if (!entry.isIntersecting) continue;
        thumbObserver.unobserve(entry.target);
        const generation = state.generation;
        const number = state.pages[Number(entry.target.dataset.index)];
        ask('render', { page: number, scale: THUMB_SCALE })
            .then((image) => generation === state.generation && paint(entry.target.querySelector('canvas'), image))
            .catch(() => entry.target.classList.add('broken'));
    }
});

function buildThumbs() {
    thumbObserver.disconnect();
    $('thumbs').replaceChildren(
        ...state.pages.map((number, index) => {
            const button = document.createElement('button');
            button.type = 'button';
            button.dataset.index = index;
            button.title = `Page ${index + 1}`;
            button.append(document.createElement('canvas'), `${index + 1}`);
            button.onclick = () => goTo(index);
            thumbObserver.observe(button);
            return button;
        }),
    );
}

// Each note page one paper page, at the note's size on paper.
function setPaperSize(size) {
    $('page-size').textContent = `@page { size: ${size.widthPt}pt ${size.heightPt}pt; margin: 0; }`;
}

async function openBytes(bytes, name) {
    $('error').hidden = true;
    const generation = ++state.generation;
    try {
        const note = await ask('open', { bytes, name }, [bytes.buffer]);
        if (generation !== state.generation) return;
        Object.assign(state, { name, pages: note.pages, layers: {}, size: note.size, index: 0 });
        state.hidden.clear();
        await readLayers(page());
        $('hint').hidden = true;
        document.title = `${name} – Note viewer`;
        setPaperSize(note.size);
        buildThumbs();
        updateControls();
        await drawPage();
        performance.measure('libnote-first-page', 'libnote-chosen');
    } catch (error) {
        if (generation !== state.generation) return;
        Object.assign(state, { pages: [], layers: {}, index: 0 });
        $('thumbs').replaceChildren();
        canvas.hidden = true;
        updateControls();
        showError(`${name}: cannot be shown.\n${error.message}`);
    }
}

async function openFile(file) {
    performance.mark('libnote-chosen');
    return openBytes(new Uint8Array(await file.arrayBuffer()), file.name);
}

async function openUrl(url) {
    performance.mark('libnote-chosen');
    const name = decodeURIComponent(new URL(url, location.href).pathname.split('/').pop() || 'note.note');
    try {
        const response = await fetch(url);
        if (!response.ok) throw new Error(`${response.status} ${response.statusText}`);
        await openBytes(new Uint8Array(await response.arrayBuffer()), name);
    } catch (error) {
        showError(`${url}: cannot be fetched: ${error.message}`);
    }
}

function download(blob, name) {
    const link = Object.assign(document.createElement('a'), { href: URL.createObjectURL(blob), download: name });
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 1000);
}

async function pagePng(number) {
    const image = await pageImage(number, 1);
    const target = document.createElement('canvas');
    paint(target, image);
    return new Promise((resolve) => target.toBlob(resolve, 'image/png'));
}

function stem() {
    return state.name.replace(/\.[^.]*$/, '') || 'note';
}

async function savePage() {
    download(await pagePng(page()), `${stem()}-p${page()}.png`);
}

async function printNote() {
    const images = [];
    for (const number of state.pages) images.push(Object.assign(new Image(), { src: URL.createObjectURL(await pagePng(number)) }));
    await Promise.all(images.map((image) => image.decode()));
    $('print-pages').replaceChildren(...images);
    print();
}

const keys = {
    ArrowLeft: -1, ArrowUp: -1, PageUp: -1, ArrowRight: 1, ArrowDown: 1, PageDown: 1,
    Home: -Infinity, End: Infinity,
};
document.addEventListener('keydown', (event) => {
    if (!(event.key in keys) || event.target.closest?.('select, input') || event.altKey || event.ctrlKey || event.metaKey) return;
    event.preventDefault();
    const step = keys[event.key];
    goTo(Number.isFinite(step) ? state.index + step : step < 0 ? 0 : state.pages.length - 1);
});

$('file').onchange = (event) => event.target.files[0] && openFile(event.target.files[0]);
$('prev').onclick = () => goTo(state.index - 1);
$('next').onclick = () => goTo(state.index + 1);
$('zoom').onchange = () => drawPage().catch((error) => showError(error.message));
$('save').onclick = () => savePage().catch((error) => showError(error.message));
$('print').onclick = () => printNote().catch((error) => showError(error.message));
$('toggle-thumbs').onclick = () => $('thumbs').classList.toggle('hidden');
addEventListener('resize', () => ['width', 'page'].includes($('zoom').value) && drawPage());
const view = $('view');
view.addEventListener('dragover', (event) => {
    event.preventDefault();
    view.classList.add('drop');
});
view.addEventListener('dragleave', () => view.classList.remove('drop'));
view.addEventListener('drop', (event) => {
    event.preventDefault();
    view.classList.remove('drop');
    const file = event.dataTransfer.files[0];
    if (file) openFile(file);
});
if (matchMedia('(max-width: 600px)').matches) $('thumbs').classList.add('hidden');
const fileParameter = new URLSearchParams(location.search).get('file');
if (fileParameter) openUrl(fileParameter);
