// Starts the page: state and address, the list of recordings, a module for each container.
import * as model from './modules/model.js';
import * as server from './modules/server.js';
import * as address from './modules/address.js';
import * as axes from './modules/axes.js';
import * as theme from './modules/theme.js';
import * as recordings from './modules/recordings.js';
import * as toolbar from './modules/toolbar.js';
import * as bookmarks from './modules/bookmarks.js';
import * as waterfall from './modules/waterfall.js';
import * as values from './modules/values.js';
import * as channel from './modules/channel.js';
import * as cursor from './modules/cursor.js';
import * as spectrum from './modules/spectrum.js';
import * as tabs from './modules/tabs.js';
import * as state from './modules/state.js';
import * as answers from './modules/answers.js';
import * as map from './modules/map.js';
import * as polar from './modules/polar.js';
import * as play from './modules/play.js';
import * as record from './modules/record.js';
import * as status from './modules/status.js';
import * as keys from './modules/keys.js';

const panels = { toolbar, bookmarks, waterfall, values, channel, cursor, spectrum, tabs, state, answers, map, polar, play, record, status };

function watchColumn() {
    const column = document.getElementById('time');
    new ResizeObserver(() => axes.layout(column.clientWidth)).observe(column);
    axes.layout(column.clientWidth);
}

async function start() {
    theme.start();
    watchColumn();
    for (const [id, panel] of Object.entries(panels)) {
        panel.create(document.getElementById(id), model, server);
    }
    keys.start();
    recordings.start();
    try {
        await recordings.load();
        recordings.open(address.read());
    } catch (error) {
        recordings.tell(error);
    }
    address.start(recordings.open);
}

start();
