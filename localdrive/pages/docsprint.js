// Prints the page once everything in it is there.
'use strict';

addEventListener('load', () => window.print(), { once: true });
