// npm run build: the WebAssembly module through emcmake and the project's CMake, then the
// package (dist/) and the viewer (dist/viewer/, with the module beside it).

import { execFileSync } from 'node:child_process';
import { cpSync, mkdirSync, rmSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

const web = dirname(dirname(fileURLToPath(import.meta.url)));
// The project's sources: web/'s parent, or where ctest's copy of the package says.
const source = process.env.LIBNOTE_SOURCE_DIR ?? dirname(web);
const build = join(web, 'build');
const dist = join(web, 'dist');
// Debian's emscripten runs its helpers with the machine's node, which does not search
// Debian's own module folder for acorn.
const env = { ...process.env, NODE_PATH: [process.env.NODE_PATH, '/usr/share/nodejs'].filter(Boolean).join(':') };

function run(command, args) {
    console.log(`+ ${command} ${args.join(' ')}`);
    execFileSync(command, args, { stdio: 'inherit', env });
}

run('emcmake', ['cmake', '-S', source, '-B', build, '-DLIBNOTE_BUILD_WEB=ON', '-DCMAKE_BUILD_TYPE=Release']);
run('cmake', ['--build', build, '-j', process.env.LIBNOTE_BUILD_JOBS ?? '2']);

rmSync(dist, { recursive: true, force: true });
const library = ['lib/index.js', 'lib/index.d.ts', 'build/web/libnote.mjs', 'build/web/libnote.wasm'];
for (const target of [dist, join(dist, 'viewer', 'lib')]) {
    mkdirSync(target, { recursive: true });
    for (const file of library) cpSync(join(web, file), join(target, file.split('/').pop()));
}
cpSync(join(web, 'viewer'), join(dist, 'viewer'), { recursive: true });
console.log(`built ${dist}`);
